#pragma once

#include "bridge/forms/JsonForm.h"
#include "platform/Text.h"
#include "tarvobase/list_view/GetFilters.h"
#include "tarvobase/records/RecordPersistanceDelegate.h"

/// The JSON forms of records and of the filters on their columns.
namespace tarvo::bridge {

/// A record in JSON: every column by its name, null for one without a value, tags as maps. Bytes have no form of their
/// own and become Base64 text.
struct JsonRecord {
    std::string recordId;
    std::string moduleName;
    ValueMap values;

    static JsonRecord of(const Record& record) {
        JsonRecord form{record.recordId(), record.moduleName(), {}};
        auto present = record.getDictionary();
        for (std::size_t i = 0; i < record.columnCount(); ++i)
            form.values.set(record.columnName(i), present.valueOf(record.columnName(i)));
        return form;
    }
    /// Makes a record in the naming in force. `recordId` is its id, whatever the column of the identifier holds.
    Record record() const { return Record(values, recordId, moduleName); }

    static constexpr auto fields() {
        return describe(field("recordId", &JsonRecord::recordId), field("moduleName", &JsonRecord::moduleName),
                        field("values", &JsonRecord::values));
    }
};

template <>
struct JsonForm<Record> {
    static Value write(const Record& record) { return toJson(JsonRecord::of(record)); }
};

/// The kind of a comparator and its case, `{"DateFilterTypes":"before"}`, since some kinds share names of cases.
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
        Reading misread = Misread{std::string(name), "there is no kind of comparator of this name"};
        static_cast<void>((... || (name == nameOf(Kinds()) && ((misread = readKind<Kinds>(json, into)), true))));
        return misread;
    }
    template <class Kind>
    static Reading readKind(const Value& json, FilterType& into) {
        auto misread = fromJson(json, into.emplace<Kind>());
        return misread ? std::move(*misread).below(nameOf(Kind())) : Reading();
    }
};

/// The kind by its name; a picklist with its values.
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

/// Reads a column, a comparator and the inputs. The name and the form of the inputs, which follow from the comparator,
/// are accepted and ignored, so that an offered filter may be sent back with its inputs. Refuses a filter that gives no
/// condition, since a list would show everything in its place.
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
        Parts parts;
        if (auto misread = fromJson(json, parts)) return misread;
        into = GetColumnFilter::getFilter(parts.filterType, std::move(parts.column));
        if (parts.filterInputValues) into.setInput(*parts.filterInputValues);
        if (auto misread = withoutCondition(into)) return misread;
        if (!parts.lookupValues) return {};
        std::map<int, Value> lookups;
        for (auto& [index, value] : *parts.lookupValues) {
            auto number = text::toInteger(index);
            if (!number || !std::in_range<int>(*number))
                return Misread{"lookupValues." + index, "the place of an input is expected"};
            lookups[static_cast<int>(*number)] = value;
        }
        into.setLookup(lookups);
        return {};
    }

private:
    /// Returns what is wrong with a filter that gives no condition on a record table.
    static Reading withoutCondition(const ColumnFilter& filter);
    struct Parts {
        std::string column;
        FilterType filterType;
        std::optional<ValueList> filterInputValues;
        std::optional<std::map<std::string, Value>> lookupValues;
        Value filerName, filterInputs;
        static constexpr auto fields() {
            return describe(field("column", &Parts::column), field("filterType", &Parts::filterType),
                            field("filterInputValues", &Parts::filterInputValues),
                            field("lookupValues", &Parts::lookupValues), optionalField("filerName", &Parts::filerName),
                            optionalField("filterInputs", &Parts::filterInputs));
        }
    };
};

/// A query in JSON, which names its module and its view.
struct JsonRecordQuery : RecordQuery {
    std::string moduleName;
    std::optional<std::string> cvId;

    /// Reads module and view from the open database. Returns a line that names the missing one, or nullopt.
    std::optional<std::string> complete();

    static constexpr auto fields() {
        using Q = JsonRecordQuery;
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
