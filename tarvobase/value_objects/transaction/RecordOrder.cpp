#include "tarvobase/value_objects/transaction/RecordOrder.h"

#include "kelva_db/Database.h"
#include "platform/Text.h"
#include "tarvobase/value_objects/transaction/ChangeRegisterInDatabase.h"
#include "tarvobase/value_objects/transaction/NTransaction.h"
#include "tarvobase/value_objects/transaction/Transaction.h"

namespace tarvo {

namespace {

using Register = ChangeRegisterTable;

std::string creatingKinds() {
    std::vector<std::string> kinds;
    for (auto kind : kindsWhere(createsRecord)) kinds.push_back(std::to_string(static_cast<int>(kind)));
    return text::join(kinds, ",");
}

std::string rawType(TransactionType type) { return std::to_string(static_cast<int>(type)); }

/// Returns the joins with the entries of both changes. SQLite keeps the order of cross joins, in which each step finds
/// its rows by a key.
std::string entriesOfBoth() {
    return std::string(" CROSS JOIN ") + Register::name + " old CROSS JOIN " + Register::name +
           " cur ON cur.queue = 'current' AND cur.transaction_id = CAST(txn.txn_id AS TEXT) AND cur.organisation = "
           "old.organisation";
}

/// Returns what is so of an edit or delete of the older queue that is ready or on its way. A row that is marked as sent
/// without parameters is left over for ever.
std::string isUnsentOlder() {
    return "old.queue = 'older' AND old.transaction_id = older.transaction_id AND CAST(older.operation_type AS "
           "INTEGER) "
           "IN (" +
           rawType(TransactionType::editRecord) + "," + rawType(TransactionType::deleteRecord) +
           ") AND older.error_message IS NULL AND older.server_response IS NULL AND (older.extras IS NULL OR "
           "(older.extras = '" +
           std::string(Transaction::State::inProgress) + "' AND CAST(older.uri_data AS TEXT) LIKE '{%'))";
}

/// One without an answer is sent again by itself.
std::string isUnsentCurrent() {
    return "(txn.error_response IS NULL OR txn.error_response = '' OR cur.refusal_code = '" +
           ErrorResponse::noAnswer("").code + "')";
}

}  // namespace

bool RecordOrder::hasTables() const {
    return adapter_ && !olderTable_.empty() && !adapter_->columnNames(olderTable_).empty() &&
           !adapter_->columnNames(std::string(TransactionDBMapper().tableName)).empty() &&
           !adapter_->columnNames(Register::name).empty();
}

std::string RecordOrder::isFirst() const {
    if (!hasTables()) return {};
    return "(txn.txn_type IN (" + creatingKinds() + ") OR NOT EXISTS (SELECT 1 FROM " + kelva::quotedName(olderTable_) +
           " older" + entriesOfBoth() + " WHERE older.record_id = txn.record_id AND " + isUnsentOlder() +
           " AND old.number < cur.number))";
}

// The rows of the older queue come first, since its record ids need not have an index yet.
std::optional<std::vector<RecordOrder::Pair>> RecordOrder::pairs() const {
    if (!hasTables()) return std::vector<Pair>();
    auto rows = adapter_->fetchObjects(
        "SELECT older.transaction_id AS older_id, txn.txn_id AS current_id, old.number < cur.number AS is_older_first "
        "FROM " +
            kelva::quotedName(olderTable_) +
            " older CROSS JOIN TRANSACTIONS_NEW txn ON txn.record_id = older.record_id" + entriesOfBoth() + " WHERE " +
            isUnsentOlder() + " AND " + isUnsentCurrent() + " AND (cur.number < old.number OR txn.txn_type NOT IN (" +
            creatingKinds() +
            ")) ORDER BY old.number, "
            "cur.number",
        std::nullopt);
    if (!rows) return std::nullopt;
    std::vector<Pair> pairs;
    for (auto row : *rows)
        pairs.push_back({.olderId = row.valueOf("older_id").textOr(""),
                         .currentId = row.valueOf("current_id").asInteger().value_or(0),
                         .isOlderFirst = row.valueOf("is_older_first").asInteger().value_or(0) != 0});
    return pairs;
}

}  // namespace tarvo
