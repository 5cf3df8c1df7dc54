#include "tarvobase/records/sql/SqlConditions.h"

#include "kelva_db/Database.h"

namespace tarvo::sql_conditions {

namespace {

using Where = Criteria::StringCriteria;

constexpr std::string_view wildcards = "%_\\";
// SQLite refuses longer patterns.
constexpr std::size_t maxPattern = 50000;

std::string escaped(std::string_view value) {
    std::string text;
    for (char c : value) {
        if (wildcards.find(c) != std::string_view::npos) text += '\\';
        text += c;
    }
    return text;
}

/// Returns a condition without LIKE, which ends at a NUL and refuses long patterns. It means the same for any text.
std::string withoutPattern(const std::string& column, bool isNegated, Where where, std::string_view value) {
    auto text = "lower(" + kelva::literal(value) + ")";
    auto place = "instr(lower(" + column + "), " + text + ")";
    if (where == Where::contains) return place + (isNegated ? " = 0" : " > 0");
    if (where == Where::startsWith) return place + (isNegated ? " != 1" : " = 1");
    auto end = "substr(hex(lower(" + column + ")), -" + std::to_string(value.size() * 2) + ")";
    return end + (isNegated ? " != " : " = ") + "hex(" + text + ")";
}

}  // namespace

std::string column(std::string_view table, std::string_view name) {
    if (table.empty()) return kelva::quotedName(name);
    return kelva::quotedName(table) + "." + kelva::quotedName(name);
}

std::string like(const std::string& column, bool isNegated, Where where, std::string_view value) {
    auto text = escaped(value);
    if (text.size() + 2 > maxPattern || value.find('\0') != std::string_view::npos)
        return withoutPattern(column, isNegated, where, value);
    auto pattern = (where == Where::startsWith ? "" : "%") + text + (where == Where::endsWith ? "" : "%");
    auto condition = column + (isNegated ? " NOT LIKE " : " LIKE ") + kelva::literal(pattern);
    return text.size() == value.size() ? condition : condition + " ESCAPE '\\'";
}

std::string number(const std::string& column) { return "CAST(NULLIF(" + column + ", '') AS NUMERIC)"; }

}  // namespace tarvo::sql_conditions
