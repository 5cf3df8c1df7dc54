#include "tarvobase/transaction/RecordIds.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <utility>
#include <vector>

#include "kelva_db/Database.h"
#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/value_objects/transaction/NTransaction.h"
#include "tarvobase/value_objects/transaction/RecordIdAliasesInDatabase.h"
#include "tarvobase/value_objects/transaction/Transaction.h"

namespace tarvo {

namespace {

/// Returns the highest number among the temporary ids of a column, and 0 if it has none. The digits have one length, so
/// the last of them in the order of texts is the highest, and an index of the column leads to it. A longer number is
/// not a temporary id, and would push all that follow beyond the nine digits by which they are known.
std::int64_t highestNumberIn(DatabaseAdapter& database, const std::string& table, std::string_view column) {
    if (database.columnNames(table).empty()) return 0;
    auto name = kelva::quotedName(column);
    auto rows = database.fetchObjects("SELECT " + name + " AS id FROM " + kelva::quotedName(table) + " WHERE " + name +
                                          " >= 'NEW_' AND " + name + " < 'NEW_:' AND " + name +
                                          " GLOB 'NEW_[0-9][0-9][0-9][0-9][0-9][0-9][0-9][0-9][0-9]' ORDER BY " + name +
                                          " DESC LIMIT 1",
                                      std::nullopt);
    return rows && !rows->empty() ? std::atoll(rows->front().valueOf("id").textOr("NEW_0").c_str() + 4) : 0;
}

/// Returns the tables of the older queue: each organisation has its own, and the temporary ids of all of them stand in
/// one folder of sounds and one table of aliases.
std::vector<std::string> olderQueuesIn(DatabaseAdapter& database) {
    constexpr TransactionDatabaseConstants older;
    std::vector<std::string> tables;
    auto found = database.fetchObjects(
        "SELECT name FROM sqlite_master WHERE type = 'table' AND name GLOB '" + std::string(older.TableName) + "*'",
        std::nullopt);
    if (!found) return tables;
    for (auto row : *found) {
        auto name = row.valueOf("name").textOr("");
        auto columns = database.columnNames(name);
        auto has = [&](std::string_view column) {
            return std::find(columns.begin(), columns.end(), column) != columns.end();
        };
        if (has(older.RecordID) && has(older.OperationType)) tables.push_back(std::move(name));
    }
    return tables;
}

}  // namespace

RecordIds::RecordIds(const Stores& stores, std::shared_ptr<UserDefaultsProtocol> userDefaults)
    : stores_(stores), counter_("lastRecordId", std::move(userDefaults)) {}

std::string RecordIds::getNewRecordId() {
    char text[32];
    std::snprintf(text, sizeof text, "NEW_%09lld", static_cast<long long>(counter_.next(highestStored())));
    return text;
}

std::int64_t RecordIds::highestStored() const {
    auto& database = stores_.databaseAdapter();
    if (!database) return 0;
    constexpr TransactionDatabaseConstants older;
    constexpr TransactionDBMapper current;
    auto highest = std::max(highestNumberIn(*database, std::string(current.tableName), current.recordId),
                            highestNumberIn(*database, RecordIdAliasTable::name, RecordIdAliasTable::temporaryId));
    for (auto& table : olderQueuesIn(*database))
        highest = std::max(highest, highestNumberIn(*database, table, older.RecordID));
    return highest;
}

}  // namespace tarvo
