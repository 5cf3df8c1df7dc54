#include "tarvobase/value_objects/transaction/RecordOrder.h"

#include <map>

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

/// Returns the join with the entry of a row. SQLite keeps the order of cross joins, in which each step finds its rows
/// by a key.
std::string withEntryOfOlder() {
    return std::string(" CROSS JOIN ") + Register::name +
           " old ON old.queue = 'older' AND old.transaction_id = older.transaction_id";
}
std::string withEntryOfCurrent() {
    return std::string(" CROSS JOIN ") + Register::name +
           " cur ON cur.queue = 'current' AND cur.transaction_id = CAST(txn.txn_id AS TEXT)";
}

/// Returns what is so of an edit or delete of the older queue that is ready or on its way. A row that is marked as sent
/// without parameters is left over for ever.
std::string isUnsentOlder() {
    return "CAST(older.operation_type AS INTEGER) IN (" + rawType(TransactionType::editRecord) + "," +
           rawType(TransactionType::deleteRecord) +
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
           " older" + withEntryOfOlder() + withEntryOfCurrent() + " WHERE older.record_id = txn.record_id AND " +
           isUnsentOlder() + " AND old.organisation = cur.organisation AND old.number < cur.number))";
}

/// Reads the changes of records that both queues have, each once, and pairs them by the way.
std::optional<std::vector<RecordOrder::Pair>> RecordOrder::pairs() const {
    std::vector<Pair> pairs;
    if (!hasTables()) return pairs;
    auto older = kelva::quotedName(olderTable_);
    auto rows = adapter_->fetchObjects(
        "SELECT old.number AS number, old.organisation || ' ' || older.record_id AS record, older.transaction_id AS "
        "older_id, 0 AS current_id, 0 AS creates FROM " +
            older + " older" + withEntryOfOlder() +
            " WHERE older.record_id IN (SELECT record_id FROM TRANSACTIONS_NEW) AND " + isUnsentOlder() +
            " UNION ALL SELECT cur.number, cur.organisation || ' ' || txn.record_id, '', txn.txn_id, txn.txn_type IN "
            "(" +
            creatingKinds() + ") FROM TRANSACTIONS_NEW txn" + withEntryOfCurrent() +
            " WHERE txn.record_id IN (SELECT record_id FROM " + older + ") AND " + isUnsentCurrent() +
            " ORDER BY number",
        std::nullopt);
    if (!rows) return std::nullopt;
    std::map<std::string, Pair> lastOf;  // of each queue, by record
    for (auto row : *rows) {
        auto& last = lastOf[row.valueOf("record").textOr("")];
        auto olderId = row.valueOf("older_id").textOr("");
        bool isOlder = !olderId.empty(), creates = row.valueOf("creates").asInteger() != 0;
        last.isOlderFirst = !isOlder;
        if (isOlder)
            last.olderId = std::move(olderId);
        else
            last.currentId = row.valueOf("current_id").asInteger().value_or(0);
        if (!last.olderId.empty() && last.currentId != 0 && !creates) pairs.push_back(last);
    }
    return pairs;
}

}  // namespace tarvo
