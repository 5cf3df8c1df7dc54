#include "tarvobase/list_view/GetFilters.h"

namespace tarvo {

namespace {

using InputFields = std::vector<ColumnFilterInputFields>;

InputFields noInput() { return {}; }
InputFields fieldValue() { return {ColumnFilterInputType::fieldValue()}; }
InputFields numberOfUnits() {
    return {ColumnFilterInputType::integer(),
            ColumnFilterInputType::picklist(
                {std::string(filter_unit::days), std::string(filter_unit::weeks), std::string(filter_unit::months)})};
}
InputFields fromTo() {
    return {ColumnFilterInputType::fieldValue(), std::string("-"), ColumnFilterInputType::fieldValue()};
}

struct FilterForm {
    FilterType type;
    std::string_view name;
    InputFields (*inputs)();
};

using Common = CommonFilterType;
using Number = NumberFilterTypes;
using Text = StringFilterTypes;
using Date = DateFilterTypes;
using DateTime = DateTimeFilterTypes;

/// Lists every comparator once. Within a kind the order is the order of the offered sets; the common comparators come
/// last. The name of `lesserThan` is the one that users of the other clients know.
const FilterForm forms[] = {
    {Number::equalTo, "=", fieldValue},
    {Number::notEqualTo, "!=", fieldValue},
    {Number::greaterThan, ">", fieldValue},
    {Number::greaterThanEqualTo, ">=", fieldValue},
    {Number::lesserThan, "<=>", fieldValue},
    {Number::lesserThanEqualTo, "<=", fieldValue},
    {Text::isExactly, "is", fieldValue},
    {Text::isnt, "isn't", fieldValue},
    {Text::contains, "contains", fieldValue},
    {Text::doesntContain, "doesn't contain", fieldValue},
    {Text::beginsWith, "starts with", fieldValue},
    {Text::endsWith, "ends with", fieldValue},
    {Date::inTheLast, "in the last", numberOfUnits},
    {Date::dueIn, "due in", numberOfUnits},
    {Date::on, "on", fieldValue},
    {Date::before, "before", fieldValue},
    {Date::after, "after", fieldValue},
    {Date::between, "between", fromTo},
    {Date::today, "today", noInput},
    {Date::yesterday, "yesterday", noInput},
    {Date::thisWeek, "this week", noInput},
    {Date::thisMonth, "this month", noInput},
    {Date::thisYear, "this year", noInput},
    {Date::lastWeek, "last week", noInput},
    {Date::lastMonth, "last month", noInput},
    {DateTime::before, "before", fieldValue},
    {DateTime::after, "after", fieldValue},
    {DateTime::between, "between", fromTo},
    {Common::isEmpty, "is empty", noInput},
    {Common::isNotEmpty, "is not empty", noInput},
};

using Types = std::vector<FilterType>;

template <class Kind>
Types allOf() {
    Types types;
    for (auto& form : forms)
        if (std::holds_alternative<Kind>(form.type)) types.push_back(form.type);
    for (auto common : {Common::isEmpty, Common::isNotEmpty}) types.emplace_back(common);
    return types;
}

Types typesFor(FieldDataType type) {
    using T = FieldDataType;
    switch (type) {
        case T::autonumber:
        case T::bigInt:
        case T::currency:
        case T::decimal:
        case T::double_:
        case T::integer:
            return allOf<Number>();
        case T::boolean:
        case T::eventRemainder:
            return {Text::isExactly};
        case T::date:
        case T::dateTime:
            return allOf<Date>();
        case T::email:
        case T::formula:
        case T::lookup:
        case T::multiselectlookup:
        case T::phone:
        case T::text:
        case T::textArea:
        case T::website:
        case T::activityType:
        case T::none:
        case T::file:
        case T::alarm:
        case T::profileImage:
            return allOf<Text>();
        case T::multiSelectPicklist:
        case T::picklist:
            return {Text::isExactly, Text::isnt, Common::isEmpty, Common::isNotEmpty};
        case T::ownerlookup:
        case T::userLookup:
            return {Text::isExactly, Text::isnt};
        default:
            return {};
    }
}

}  // namespace

ColumnFilter GetColumnFilter::getFilter(const FilterType& filterType, std::string column) {
    ColumnFilter filter{.filerName = {}, .column = std::move(column), .filterType = filterType};
    for (auto& form : forms) {
        if (form.type != filterType) continue;
        filter.filerName = form.name;
        filter.filterInputs = form.inputs();
    }
    return filter;
}

ColumnFilter GetColumnFilter::getFilter(const FilterType& filterType, const Metadata& column) {
    return getFilter(filterType, column.fieldIdentifier());
}

GetFilters::Filters GetFilters::getFilters(const Metadata& column) {
    Filters filters;
    for (auto& type : typesFor(column.fieldType)) filters.push_back(GetColumnFilter::getFilter(type, column));
    return filters;
}

GetFilters::FiltersByColumn GetFilters::getFilters(const std::vector<const Metadata*>& columns) {
    FiltersByColumn filters;
    for (auto column : columns) filters.set(column->fieldIdentifier(), getFilters(*column));
    return filters;
}

GetFilters::Filters GetFilters::getFilters(const std::string& column, const MetadataInfoContract& metadata) {
    auto field = metadata.getField(column);
    return field ? getFilters(*field) : Filters();
}

GetFilters::FiltersByColumn GetFilters::getFilters(const std::vector<std::string>& columns,
                                                   const MetadataInfoContract& metadata) {
    FiltersByColumn filters;
    for (auto& column : columns) filters.set(column, getFilters(column, metadata));
    return filters;
}

}  // namespace tarvo
