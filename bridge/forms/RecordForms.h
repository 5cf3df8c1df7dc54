#pragma once

#include "bridge/forms/JsonForm.h"
#include "platform/Text.h"
#include "tarvobase/list_view/GetFilters.h"
#include "tarvobase/records/sql/RecordPersistanceDelegate.h"

/// The JSON forms of records and of the filters on their columns.
namespace tarvo::bridge {

/// A record as it is told: every column by its name, null for one without a value, tags as maps. It cannot say bytes,
/// which become their Base64 text.
struct RecordTold {
    std::string recordId;
    std::string moduleName;
    ValueMap values;

    static RecordTold of(const Record& record) {
        RecordTold told{record.recordId(), record.moduleName(), {}};
        auto present = record.getDictionary();
        for (std::size_t i = 0; i < record.columnCount(); ++i)
            told.values.set(record.columnName(i), present.valueOf(record.columnName(i)));
        return told;
    }
    /// In the naming in force; the id counts, whatever stands in the column of the identifier.
    Record record() const { return Record(values, recordId, moduleName); }

    static constexpr auto fields() {
        return describe(field("recordId", &RecordTold::recordId), field("moduleName", &RecordTold::moduleName),
                        field("values", &RecordTold::values));
    }
};

template <>
struct JsonForm<Record> {
    static Value write(const Record& record) { return toJson(RecordTold::of(record)); }
};

/// The kind of a comparator and its case, `{"DateFilterTypes":"before"}`: two kinds share names.
template <>
struct JsonForm<FilterType> {
    static Value write(const FilterType& type) {
        return std::visit([](auto one) { return Value(ValueMap{{std::string(nameOf(one)), toJson(one)}}); }, type);
    }
    static Reading read(const Value& json, FilterType& into) {
        auto map = json.asMap();
        if (!map || map->size() != 1) return Misread{{}, "a map with the kind of the comparator alone is expected"};
        return readAs(map->begin()->name, map->begin()->value, into, static_cast<FilterType*>(nullptr));
    }

private:
    static constexpr std::string_view nameOf(CommonFilterType) { return "CommonFilterType"; }
    static constexpr std::string_view nameOf(NumberFilterTypes) { return "NumberFilterTypes"; }
    static constexpr std::string_view nameOf(StringFilterTypes) { return "StringFilterTypes"; }
    static constexpr std::string_view nameOf(DateFilterTypes) { return "DateFilterTypes"; }
    static constexpr std::string_view nameOf(DateTimeFilterTypes) { return "DateTimeFilterTypes"; }

    template <class... Kinds>
    static Reading readAs(std::string_view name, const Value& json, FilterType& into, std::variant<Kinds...>*) {
        Reading misread = Misread{std::string(name), "there is no kind of comparators of this name"};
        static_cast<void>((... || (name == nameOf(Kinds()) && ((misread = readKind<Kinds>(json, into)), true))));
        return misread;
    }
    template <class Kind>
    static Reading readKind(const Value& json, FilterType& into) {
        auto misread = fromJson(json, into.emplace<Kind>());
        return misread ? std::move(*misread).below(nameOf(Kind())) : Reading();
    }
};

/// The kind by its name, a picklist with what may be picked.
template <>
struct JsonForm<ColumnFilterInputType> {
    static Value write(const ColumnFilterInputType& type) {
        using Case = ColumnFilterInputType::Case;
        switch (type.which) {
            case Case::picklist:
                return ValueMap{{"picklist", toJson(type.values)}};
            case Case::fieldValue:
                return "fieldValue";
            case Case::integer:
                return "integer";
            case Case::string:
                return "string";
        }
        return {};
    }
};

/// `{"input":..}` or `{"separator":".."}`.
template <>
struct JsonForm<ColumnFilterInputFields> {
    static Value write(const ColumnFilterInputFields& part) {
        if (auto separator = std::get_if<std::string>(&part)) return ValueMap{{"separator", toJson(*separator)}};
        return ValueMap{{"input", toJson(std::get<ColumnFilterInputType>(part))}};
    }
};

/// What is read is a column, a comparator and the inputs; the name and the form of the inputs, which follow from the
/// comparator, may stand there and count for nothing, so that a filter that was offered comes back with its inputs.
template <>
struct JsonForm<ColumnFilter> {
    static Value write(const ColumnFilter& filter) {
        ValueMap map{{"filerName", toJson(filter.filerName)},
                     {"column", toJson(filter.column)},
                     {"filterType", toJson(filter.filterType)},
                     {"filterInputs", toJson(filter.filterInputs)}};
        if (filter.filterInputValues) map.set("filterInputValues", toJson(*filter.filterInputValues));
        if (!filter.lookupValues) return map;
        ValueMap lookups;
        for (auto& [index, text] : *filter.lookupValues) lookups.set(std::to_string(index), toJson(text));
        map.set("lookupValues", std::move(lookups));
        return map;
    }

    static Reading read(const Value& json, ColumnFilter& into) {
        Told told;
        if (auto misread = fromJson(json, told)) return misread;
        into = GetColumnFilter::getFilter(told.filterType, std::move(told.column));
        if (told.filterInputValues) into.setInput(*told.filterInputValues);
        if (!told.lookupValues) return {};
        std::map<int, Value> lookups;
        for (auto& [index, value] : *told.lookupValues) {
            auto number = text::toInteger(index);
            if (!number || !std::in_range<int>(*number))
                return Misread{"lookupValues." + index, "the place of an input is expected"};
            lookups[static_cast<int>(*number)] = value;
        }
        into.setLookup(lookups);
        return {};
    }

private:
    struct Told {
        std::string column;
        FilterType filterType;
        std::optional<ValueList> filterInputValues;
        std::optional<std::map<std::string, Value>> lookupValues;
        Value filerName, filterInputs;
        static constexpr auto fields() {
            return describe(field("column", &Told::column), field("filterType", &Told::filterType),
                            field("filterInputValues", &Told::filterInputValues),
                            field("lookupValues", &Told::lookupValues), optionalField("filerName", &Told::filerName),
                            optionalField("filterInputs", &Told::filterInputs));
        }
    };
};

/// A query as it is told, with the module and the view by their names.
struct RecordQueryTold : RecordQuery {
    std::string moduleName;
    std::optional<std::string> cvId;

    /// Reads module and view from the open database. Gives a line that says which of them is not there, or nothing.
    std::optional<std::string> complete();

    static constexpr auto fields() {
        using Q = RecordQueryTold;
        return describe(field("moduleName", &Q::moduleName), field("cvId", &Q::cvId),
                        field("columnNamesAndValues", &Q::columnNamesAndValues),
                        field("equalColumnNames", &Q::equalColumnNames), field("filters", &Q::filters),
                        field("customQuery", &Q::customQuery), field("columnsToFetch", &Q::columnsToFetch),
                        field("columnsToSortWith", &Q::columnsToSortWith), field("from", &Q::from),
                        field("limit", &Q::limit));
    }
};

/// The filters by the identifiers of their columns.
template <>
struct JsonForm<GetFilters::FiltersByColumn> {
    static Value write(const GetFilters::FiltersByColumn& filters) {
        ValueMap map;
        for (auto& column : filters.keys()) map.set(column, toJson(*filters.find(column)));
        return map;
    }
};

}  // namespace tarvo::bridge
