#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "platform/Describe.h"
#include "platform/Value.h"

/// Filters that a user sets on a column of a list: what a filter compares, and the inputs that a screen asks for.
namespace tarvo {

enum class CommonFilterType { isEmpty, isNotEmpty };
enum class NumberFilterTypes { equalTo, notEqualTo, greaterThan, greaterThanEqualTo, lesserThan, lesserThanEqualTo };
enum class StringFilterTypes { isExactly, isnt, contains, doesntContain, beginsWith, endsWith };
enum class DateFilterTypes {
    inTheLast,
    dueIn,
    on,
    before,
    after,
    between,
    today,
    yesterday,
    thisWeek,
    thisMonth,
    thisYear,
    lastWeek,
    lastMonth
};
enum class DateTimeFilterTypes { before, after, between };

/// The comparator of a filter.
using FilterType =
    std::variant<CommonFilterType, NumberFilterTypes, StringFilterTypes, DateFilterTypes, DateTimeFilterTypes>;

template <>
struct EnumCases<CommonFilterType> {
    using T = CommonFilterType;
    static constexpr EnumCase<T> cases[] = {{T::isEmpty, "isEmpty"}, {T::isNotEmpty, "isNotEmpty"}};
};
template <>
struct EnumCases<NumberFilterTypes> {
    using T = NumberFilterTypes;
    static constexpr EnumCase<T> cases[] = {
        {T::equalTo, "equalTo"},         {T::notEqualTo, "notEqualTo"},
        {T::greaterThan, "greaterThan"}, {T::greaterThanEqualTo, "greaterThanEqualTo"},
        {T::lesserThan, "lesserThan"},   {T::lesserThanEqualTo, "lesserThanEqualTo"}};
};
template <>
struct EnumCases<StringFilterTypes> {
    using T = StringFilterTypes;
    static constexpr EnumCase<T> cases[] = {{T::isExactly, "isExactly"},   {T::isnt, "isnt"},
                                            {T::contains, "contains"},     {T::doesntContain, "doesntContain"},
                                            {T::beginsWith, "beginsWith"}, {T::endsWith, "endsWith"}};
};
template <>
struct EnumCases<DateFilterTypes> {
    using T = DateFilterTypes;
    static constexpr EnumCase<T> cases[] = {
        {T::inTheLast, "inTheLast"}, {T::dueIn, "dueIn"},         {T::on, "on"},
        {T::before, "before"},       {T::after, "after"},         {T::between, "between"},
        {T::today, "today"},         {T::yesterday, "yesterday"}, {T::thisWeek, "thisWeek"},
        {T::thisMonth, "thisMonth"}, {T::thisYear, "thisYear"},   {T::lastWeek, "lastWeek"},
        {T::lastMonth, "lastMonth"}};
};
template <>
struct EnumCases<DateTimeFilterTypes> {
    using T = DateTimeFilterTypes;
    static constexpr EnumCase<T> cases[] = {{T::before, "before"}, {T::after, "after"}, {T::between, "between"}};
};

/// The kind of one input.
struct ColumnFilterInputType {
    enum class Case { picklist, fieldValue, integer, string };
    static ColumnFilterInputType picklist(std::vector<std::string> values) {
        return {Case::picklist, std::move(values)};
    }
    /// A value of the field's own type.
    static ColumnFilterInputType fieldValue() { return {Case::fieldValue, {}}; }
    static ColumnFilterInputType integer() { return {Case::integer, {}}; }
    static ColumnFilterInputType string() { return {Case::string, {}}; }

    Case which = Case::fieldValue;
    std::vector<std::string> values;  ///< of a picklist
    friend bool operator==(const ColumnFilterInputType&, const ColumnFilterInputType&) = default;
};

/// A part of the form that asks for the inputs: an input, or a fixed text between two inputs.
using ColumnFilterInputFields = std::variant<ColumnFilterInputType, std::string>;

/// One filter on one column.
struct ColumnFilter {
    std::string filerName;  ///< the name shown
    std::string column;     ///< identifier of the field
    std::optional<std::vector<std::string>> filterInputValues{};
    std::optional<std::map<int, std::string>> lookupValues{};  ///< values of lookup inputs, by the input's index
    std::vector<ColumnFilterInputFields> filterInputs{};
    FilterType filterType{};

    /// Returns the kinds of the inputs, in order.
    std::vector<ColumnFilterInputType> filterInputTypes() const;
    /// Stores the inputs as texts: a text unchanged, a list as `["a", "b"]`. A value that has no text becomes the empty
    /// text.
    void setInput(const ValueList& values);
    void setLookup(const std::map<int, Value>& values);

    friend bool operator==(const ColumnFilter&, const ColumnFilter&) = default;
};

/// The units of time of "in the last" and "due in".
namespace filter_unit {
inline constexpr std::string_view days = "days", weeks = "weeks", months = "months";
}

}  // namespace tarvo
