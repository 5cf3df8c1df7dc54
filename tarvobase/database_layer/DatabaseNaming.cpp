#include "tarvobase/database_layer/DatabaseNaming.h"

#include "tarvobase/database_layer/DatabaseAdapter.h"

namespace tarvo {

namespace {

// Like the identity of a database, a table of the library's own.
constexpr const char* namingTable = "TARVO_DATABASE_NAMING";

std::string textOf(const FieldIdentifier& naming) {
    return naming == FieldIdentifier::crmColumnNameIdentifier() ? "column" : "api";
}

}  // namespace

bool DatabaseNaming::store(DatabaseAdapter& database, const FieldIdentifier& naming) {
    using Statement = DatabaseAdapter::Statement;
    return database.execute(
        {Statement{"CREATE TABLE IF NOT EXISTS " + std::string(namingTable) +
                       " (id INTEGER PRIMARY KEY CHECK (id = 1), naming TEXT NOT NULL)",
                   std::nullopt},
         Statement{"INSERT OR IGNORE INTO " + std::string(namingTable) + " VALUES (1, ?)", ValueList{textOf(naming)}}});
}

bool DatabaseNaming::isOther(DatabaseAdapter& database, const FieldIdentifier& naming) {
    if (database.columnNames(namingTable).empty()) return false;
    auto rows = database.fetchAllObjects(namingTable);
    return rows && !rows->empty() && rows->front().valueOf("naming").textOr("") != textOf(naming);
}

}  // namespace tarvo
