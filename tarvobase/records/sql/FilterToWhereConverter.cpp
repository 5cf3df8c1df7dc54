#include "tarvobase/records/sql/FilterToWhereConverter.h"

#include "kelva_db/Database.h"
#include "platform/Log.h"
#include "platform/Text.h"
#include "tarvobase/records/RecordUtil.h"
#include "tarvobase/records/sql/DateConditions.h"
#include "tarvobase/records/sql/SqlConditions.h"

namespace tarvo {

namespace {

using Inputs = std::vector<std::string>;

constexpr std::string_view numberOperators[] = {" = ", " != ", " > ", " >= ", " < ", " <= "};

std::string_view trimmedOfSpaces(std::string_view text) {
    auto first = text.find_first_not_of(' ');
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

/// Removes the two characters that enclose a text, if both are there.
bool unwrap(std::string_view& text, char open, char close) {
    if (text.size() < 2 || text.front() != open || text.back() != close) return false;
    text = text.substr(1, text.size() - 2);
    return true;
}

/// Returns the texts of `["a", "b"]`, with or without a space after the comma. Any other text is a single item. Quotes
/// inside an item belong to it.
std::vector<std::string> itemsOf(const std::string& input) {
    auto text = withDecodedCommas(input);
    auto rest = trimmedOfSpaces(text);
    unwrap(rest, '[', ']');
    rest = trimmedOfSpaces(rest);
    if (!unwrap(rest, '"', '"')) return {std::string(rest)};
    std::vector<std::string> items;
    for (std::size_t at = 0; at <= rest.size();) {
        auto end = std::min(rest.find("\",\"", at), rest.find("\", \"", at));
        if (end == std::string_view::npos) end = rest.size();
        items.emplace_back(trimmedOfSpaces(rest.substr(at, end - at)));
        at = end + (rest.substr(end).starts_with("\",\"") ? 3 : 4);
    }
    return items;
}

std::string oneOf(const std::vector<std::string>& items) {
    std::vector<std::string> literals;
    for (auto& item : items) literals.push_back(kelva::literal(item));
    return "(" + text::join(literals, ", ") + ")";
}

/// The server sends an empty text for an empty value, and it is stored as such.
std::optional<std::string> condition(const std::string& column, CommonFilterType type, const Inputs&) {
    if (type == CommonFilterType::isEmpty) return "(" + column + " IS NULL OR " + column + " = '')";
    return "(" + column + " IS NOT NULL AND " + column + " != '')";
}

std::optional<std::string> condition(const std::string& column, NumberFilterTypes type, const Inputs& inputs) {
    if (inputs.empty()) return std::nullopt;
    auto op = numberOperators[static_cast<std::size_t>(type)];
    std::string number(trimmedOfSpaces(inputs.front()));
    // An input that is not a number is compared as a text.
    if (!text::toReal(number)) return std::string(column).append(op).append(kelva::literal(inputs.front()));
    return sql_conditions::number(column).append(op).append(number);
}

std::optional<std::string> condition(const std::string& column, StringFilterTypes type, const Inputs& inputs) {
    using T = StringFilterTypes;
    using Where = Criteria::StringCriteria;
    if (inputs.empty()) return std::nullopt;
    auto& value = inputs.front();
    switch (type) {
        case T::isExactly:
            return column + " IN " + oneOf(itemsOf(value));
        case T::isnt:
            return column + " NOT IN " + oneOf(itemsOf(value));
        case T::contains:
            return sql_conditions::like(column, false, Where::contains, value);
        case T::doesntContain:
            return sql_conditions::like(column, true, Where::contains, value);
        case T::beginsWith:
            return sql_conditions::like(column, false, Where::startsWith, value);
        case T::endsWith:
            return sql_conditions::like(column, false, Where::endsWith, value);
    }
    return std::nullopt;
}

template <class DateType>
std::optional<std::string> dates(const std::string& column, DateType type, const Inputs& inputs) {
    auto text = dateCondition(column, type, inputs);
    if (!text) platform::log(platform::LogLevel::warning, "records", "Illegal filter input");
    return text;
}
std::optional<std::string> condition(const std::string& column, DateFilterTypes type, const Inputs& inputs) {
    return dates(column, type, inputs);
}
std::optional<std::string> condition(const std::string& column, DateTimeFilterTypes type, const Inputs& inputs) {
    return dates(column, type, inputs);
}

}  // namespace

std::optional<std::string> FilterToWhereConverter::getWhereStatement(const std::vector<ColumnFilter>& filters,
                                                                     const std::optional<std::string>& moduleName) {
    std::vector<std::string> conditions;
    for (auto& filter : filters)
        if (auto text = getWhereStatement(filter, moduleName)) conditions.push_back(*std::move(text));
    if (conditions.empty()) return std::nullopt;
    return "(" + text::join(conditions, " AND ") + ")";
}

std::optional<std::string> FilterToWhereConverter::getWhereStatement(const ColumnFilter& filter,
                                                                     const std::optional<std::string>& moduleName) {
    auto column = sql_conditions::column(moduleName ? RecordUtil::getTableName(*moduleName) : "", filter.column);
    auto inputs = filter.filterInputValues.value_or(Inputs());
    return std::visit([&](auto type) { return condition(column, type, inputs); }, filter.filterType);
}

}  // namespace tarvo
