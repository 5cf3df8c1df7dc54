#include "tarvobase/database_layer/Statements.h"

#include "platform/Text.h"

namespace tarvo {

namespace {

using Pieces = std::vector<std::string>;

std::string joined(const Pieces& pieces) { return text::join(pieces, " "); }

void addWhere(Pieces& pieces, const std::vector<Criteria>& criterias) {
    if (criterias.empty()) return;
    pieces.push_back("WHERE");
    pieces.push_back(joinedSql(criterias));
}

void addLimit(Pieces& pieces, const std::optional<std::int64_t>& limit, const std::optional<std::int64_t>& offset) {
    if (offset)
        pieces.push_back("LIMIT ? OFFSET ?");
    else if (limit)
        pieces.push_back("LIMIT ?");
}

// For SQLite a limit of -1 means no limit.
void addLimitParameters(ValueList& parameters, const std::optional<std::int64_t>& limit,
                        const std::optional<std::int64_t>& offset) {
    if (offset || limit) parameters.push_back(limit.value_or(-1));
    if (offset) parameters.push_back(*offset);
}

std::vector<std::string> columnNames(const ValueMap& map) {
    std::vector<std::string> list;
    for (auto& entry : map) list.push_back(entry.name);
    return list;
}

ValueList valuesOf(const ValueMap& map) {
    ValueList list;
    for (auto& entry : map) list.push_back(entry.value);
    return list;
}

template <class T>
std::string joinedSql(const std::vector<T>& queries, std::string_view separator) {
    std::vector<std::string> texts;
    for (auto& query : queries) texts.push_back(query.sql());
    return text::join(texts, separator);
}

}  // namespace

FetchQuery::FetchQuery(std::string tableName, Criteria criteria)
    : tableName(std::move(tableName)), criterias{std::move(criteria)} {}

FetchQuery::FetchQuery(std::string tableName, const std::optional<ValueMap>& columnValues)
    : tableName(std::move(tableName)) {
    if (columnValues) filter(*columnValues);
}

FetchQuery::FetchQuery(std::string tableName, const std::optional<ValueMap>& columnValues,
                       std::vector<SortDescriptor> sortBy)
    : FetchQuery(std::move(tableName), columnValues) {
    this->sortBy = std::move(sortBy);
}

FetchQuery::FetchQuery(std::string tableName, const std::optional<ValueMap>& columnValues,
                       const std::vector<std::string>& sortedByColumns)
    : FetchQuery(std::move(tableName), columnValues) {
    sortedBy(sortedByColumns);
}

FetchQuery& FetchQuery::filter(const ValueMap& columnValues) { return filter(Criteria::equals(columnValues)); }
FetchQuery& FetchQuery::filter(Criteria criteria) {
    criterias.push_back(std::move(criteria));
    return *this;
}

FetchQuery& FetchQuery::sortedBy(const std::vector<std::string>& columnNames) {
    sortBy.clear();
    for (auto& name : columnNames) sortBy.push_back(SortDescriptor({.colName = name}));
    return *this;
}

std::string FetchQuery::sql() const {
    Pieces pieces{"SELECT", columns.empty() ? "*" : text::join(columns, ", "), "FROM", tableName};
    addWhere(pieces, criterias);
    if (!sortBy.empty()) {
        pieces.push_back("ORDER BY");
        pieces.push_back(joinedSql(sortBy, ", "));
    }
    addLimit(pieces, limit, offset);
    return joined(pieces);
}

ValueList FetchQuery::parameters() const {
    ValueList parameters;
    appendParameters(parameters, criterias);
    addLimitParameters(parameters, limit, offset);
    return parameters;
}

std::string InsertQuery::sql() const {
    Pieces pieces{"INSERT"};
    if (replaceOnConflict) pieces.push_back("OR REPLACE");
    pieces.insert(pieces.end(), {"INTO", tableName, "(" + text::join(columnNames(values), ",") + ")", "VALUES",
                                 "(" + placeholders(values.size()) + ")"});
    return joined(pieces);
}
ValueList InsertQuery::parameters() const { return valuesOf(values); }

UpdateQuery::UpdateQuery(std::string tableName, ValueMap columnValues, const ValueMap& criteria)
    : UpdateQuery(std::move(tableName), std::move(columnValues)) {
    filter(criteria);
}
UpdateQuery& UpdateQuery::set(const ValueMap& values) {
    columnValues.merge(values);
    return *this;
}
UpdateQuery& UpdateQuery::filter(const ValueMap& columnValues) { return filter(Criteria::equals(columnValues)); }
UpdateQuery& UpdateQuery::filter(Criteria criteria) {
    criterias.push_back(std::move(criteria));
    return *this;
}

std::string UpdateQuery::sql() const {
    Pieces pieces{"UPDATE"};
    if (ignoreOnError) pieces.push_back("OR IGNORE");
    auto columns = columnNames(columnValues);
    for (auto& column : columns) column += " = ? ";
    pieces.insert(pieces.end(), {tableName, "SET", text::join(columns, ", ")});
    addWhere(pieces, criterias);
    return joined(pieces);
}
ValueList UpdateQuery::parameters() const {
    auto parameters = valuesOf(columnValues);
    appendParameters(parameters, criterias);
    return parameters;
}

DeleteQuery::DeleteQuery(std::string tableName, const ValueMap& criteria) : DeleteQuery(std::move(tableName)) {
    filter(criteria);
}
DeleteQuery::DeleteQuery(std::string tableName, Criteria criteria) : DeleteQuery(std::move(tableName)) {
    filter(std::move(criteria));
}
DeleteQuery& DeleteQuery::filter(const ValueMap& columnValues) { return filter(Criteria::equals(columnValues)); }
DeleteQuery& DeleteQuery::filter(Criteria criteria) {
    criterias.push_back(std::move(criteria));
    return *this;
}

std::string DeleteQuery::sql() const {
    Pieces pieces{"DELETE FROM", tableName};
    addWhere(pieces, criterias);
    return joined(pieces);
}
ValueList DeleteQuery::parameters() const {
    ValueList parameters;
    appendParameters(parameters, criterias);
    return parameters;
}

CopyQuery& CopyQuery::filter(const ValueMap& columnValues) { return filter(Criteria::equals(columnValues)); }
CopyQuery& CopyQuery::filter(Criteria criteria) {
    criterias.push_back(std::move(criteria));
    return *this;
}

std::string CopyQuery::sql() const {
    Pieces pieces{"INSERT INTO", destinationTable};
    std::string sources = "*";
    if (!columnMap.empty()) {
        pieces.push_back("(" + text::join(columnNames(columnMap), ", ") + ")");
        std::vector<std::string> columns;
        for (auto& entry : columnMap) columns.push_back(entry.value.textOr(""));
        sources = text::join(columns, ", ");
    }
    pieces.insert(pieces.end(), {"SELECT", sources, "FROM", sourceTable});
    addWhere(pieces, criterias);
    addLimit(pieces, limit, offset);
    return joined(pieces);
}
ValueList CopyQuery::parameters() const {
    ValueList parameters;
    appendParameters(parameters, criterias);
    addLimitParameters(parameters, limit, offset);
    return parameters;
}

}  // namespace tarvo
