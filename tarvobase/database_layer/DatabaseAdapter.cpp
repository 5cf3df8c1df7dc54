#include "tarvobase/database_layer/DatabaseAdapter.h"

namespace tarvo {

namespace {

std::optional<std::int64_t> countIn(const std::optional<Rows>& rows) {
    if (!rows || rows->empty()) return std::nullopt;
    auto cell = rows->front().find("CNT");
    return cell ? cell->asInteger() : std::nullopt;
}

}  // namespace

std::optional<Rows> DatabaseAdapter::fetchAllObjects(const std::string& tableName) {
    return fetchObjects("SELECt * FROM " + tableName, std::nullopt);
}

std::optional<std::int64_t> DatabaseAdapter::count(const std::string& tableName,
                                                   const std::optional<Criteria>& criteria,
                                                   std::optional<std::int64_t> from,
                                                   std::optional<std::int64_t> limit) {
    FetchQuery query(tableName);
    if (criteria) query.filter(*criteria);
    query.offset = from;
    query.limit = limit;
    return count(query);
}

std::optional<std::int64_t> DatabaseAdapter::count(FetchQuery& query) {
    query.columns = {"COUNT(1) AS CNT"};
    return countIn(fetchObjects(query));
}

bool DatabaseAdapter::deleteObjects(const std::string& tableName, const Criteria& criteria) {
    return execute("DELETE FROM " + tableName + " WHERE " + criteria.sql(), criteria.parameters());
}

bool DatabaseAdapter::deleteAllObjects(const std::string& tableName) {
    return execute("DELETE FROM " + tableName, std::nullopt);
}

bool DatabaseAdapter::execute(const std::vector<std::reference_wrapper<const Query>>& queries) {
    std::vector<Statement> statements;
    statements.reserve(queries.size());
    for (const Query& query : queries) statements.push_back({query.sql(), query.parameters()});
    return execute(statements);
}

}  // namespace tarvo
