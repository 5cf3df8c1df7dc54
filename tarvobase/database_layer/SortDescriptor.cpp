#include "tarvobase/database_layer/SortDescriptor.h"

namespace tarvo {

namespace {

std::string pickListTerm(const std::string& column, const std::vector<std::string>& values) {
    std::string term = "CASE \n";
    for (std::size_t i = 0; i < values.size(); ++i)
        term += "WHEN " + column + " LIKE \"" + values[i] + "\" THEN " + std::to_string(i) + "\n";
    return term + "END \n";
}

}  // namespace

SortDescriptor SortDescriptor::customOrderBy(std::string text) {
    return SortDescriptor(Parts{.colName = {}, .customOrderBy = std::move(text)});
}

std::string SortDescriptor::sql() const {
    if (parts_.customOrderBy) return *parts_.customOrderBy;
    if (parts_.pickListField) return pickListTerm(parts_.colName, parts_.pickListValues);
    auto& column = parts_.colName;
    auto term = parts_.numeric ? "CAST(" + column + " AS INTEGER)" : " " + column + " COLLATE NOCASE";
    term += parts_.ascending ? " ASC" : " DESC";
    if (parts_.nullValuesAtEnd)
        term += ", case when " + column + " is null then '~' when trim(" + column + ")='' then '~' end";
    return term;
}

}  // namespace tarvo
