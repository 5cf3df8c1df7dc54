#include "tarvobase/database_layer/DatabaseAdapter.h"

#include "kelva_db/Database.h"
#include "platform/Random.h"

namespace tarvo {

namespace {

std::optional<std::int64_t> countIn(const std::optional<Rows>& rows) {
    if (!rows || rows->empty()) return std::nullopt;
    auto cell = rows->front().find("CNT");
    return cell ? cell->asInteger() : std::nullopt;
}

// A table of the library's own; the server owns the schema of its data.
constexpr const char* identityTable = "TARVO_DATABASE_IDENTITY";

}  // namespace

std::optional<std::string> DatabaseAdapter::identity() {
    auto stored = [&]() -> std::optional<std::string> {
        if (columnNames(identityTable).empty()) return std::nullopt;
        auto rows = fetchAllObjects(identityTable);
        if (!rows || rows->empty()) return std::nullopt;
        return rows->front().valueOf("identity").textOr("");
    };
    if (auto identity = stored()) return identity;
    // Two callers may get here at once: the first text stays.
    bool isStored = execute({Statement{"CREATE TABLE IF NOT EXISTS " + std::string(identityTable) +
                                           " (id INTEGER PRIMARY KEY CHECK (id = 1), identity TEXT NOT NULL)",
                                       std::nullopt},
                             Statement{"INSERT OR IGNORE INTO " + std::string(identityTable) + " VALUES (1, ?)",
                                       ValueList{platform::Random::uuid()}}});
    return isStored ? stored() : std::nullopt;
}

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

bool DatabaseAdapter::createTables(const std::vector<std::string>& rawQueries) {
    return tolerantTransaction("create tables", [&] {
        for (auto& rawQuery : rawQueries) createTable(rawQuery);
        return true;
    });
}

bool DatabaseAdapter::deleteObjects(const std::string& tableName, const Criteria& criteria) {
    return execute("DELETE FROM " + kelva::quotedName(tableName) + " WHERE " + criteria.sql(), criteria.parameters());
}

bool DatabaseAdapter::deleteAllObjects(const std::string& tableName) {
    return execute("DELETE FROM " + kelva::quotedName(tableName), std::nullopt);
}

bool DatabaseAdapter::execute(const std::vector<std::reference_wrapper<const Query>>& queries) {
    std::vector<Statement> statements;
    statements.reserve(queries.size());
    for (const Query& query : queries) statements.push_back({query.sql(), query.parameters()});
    return execute(statements);
}

}  // namespace tarvo
