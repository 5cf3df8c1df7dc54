#include "tarvobase/value_objects/transaction/TransactionInDatabase.h"

#include "tarvobase/storage/DatabasePersistanceClass.h"

namespace tarvo {

namespace {

const TransactionDatabaseConstants transactionColumns;

// The number of a row is asked for under a name that no column of a server has.
constexpr std::string_view rowNumberName = "tarvo_row";

std::string transactionColumn(std::string_view TransactionDatabaseConstants::*name) {
    return std::string(transactionColumns.*name);
}

EnsuredTable::Declaration transactionTable() {
    auto& names = transactionColumns;
    auto column = [](std::string_view name, std::string type) {
        return EnsuredTable::Column{std::string(name), std::move(type)};
    };
    return {.columns = {column(names.TransactionID, "TEXT"), column(names.RecordID, "TEXT"),
                        column(names.ModuleName, "TEXT"), column(names.OperationType, "INTEGER"),
                        column(names.DataJSON, "BLOB"), column(names.UriData, "BLOB"),
                        column(names.ErrorMessage, "TEXT"), column(names.ParentRecordID, "TEXT"),
                        column(names.ParentRecordModule, "TEXT"), column(names.TransactionTime, "INTEGER"),
                        column(names.ServerResponse, "TEXT"), column(names.Extras, "TEXT")},
            .keys = "UNIQUE (" + std::string(names.TransactionID) + ")"};
}

/// Returns the time as a number. Tables that other programs made may hold it as text.
std::string transactionTimeTerm() { return "CAST(" + std::string(transactionColumns.TransactionTime) + " AS INTEGER)"; }

Criteria isTransaction(const std::string& transactionID) {
    return columnIs(transactionColumns.TransactionID, transactionID);
}

UnreadableTransaction unreadableOf(const Row& row, std::string column) {
    auto textIn = [&](std::string_view name) { return row.valueOf(name).toText(); };
    return {.row = row.valueOf(rowNumberName).asInteger().value_or(0),
            .transactionID = textIn(transactionColumns.TransactionID),
            .column = std::move(column),
            .extras = textIn(transactionColumns.Extras)};
}

TransactionPersistanceDelegate::Found firstReadable(const TransactionPersistanceDelegate::Queued& queued) {
    if (!queued) return ParserError::noData();
    if (queued->transactions.empty()) return std::optional<Transaction>();
    return std::optional(queued->transactions.front());
}

}  // namespace

TransactionInDatabase::TransactionInDatabase(const std::string& tableName,
                                             std::shared_ptr<DatabaseAdapter> databaseAdapter)
    : table_(std::move(databaseAdapter), tableName, transactionTable()) {}

bool TransactionInDatabase::storeTransactions(const std::vector<Transaction>& transactions) {
    return table_.replace(std::string(transactionColumns.TransactionID), rowsOf(transactions, transactionColumns));
}
bool TransactionInDatabase::removeTransaction(const std::string& transactionID) {
    return table_.remove(isTransaction(transactionID));
}
bool TransactionInDatabase::removeTransactions(const std::string& recordID) {
    return table_.remove(columnIs(transactionColumns.RecordID, recordID));
}
bool TransactionInDatabase::removeTransactionsWithIds(const std::vector<std::string>& transactionIDs) {
    return transactionIDs.empty() || table_.remove(columnIn(transactionColumns.TransactionID, transactionIDs));
}

TransactionPersistanceDelegate::Found TransactionInDatabase::getNextRunnableTransaction() {
    auto query = inOrder();
    for (auto name : {transactionColumns.ServerResponse, transactionColumns.ErrorMessage, transactionColumns.Extras})
        query.filter(Criteria::isNull(std::string(name)));
    query.limit = 1;
    auto first = queued(query);
    if (!first || first->unreadable.empty()) return firstReadable(first);
    query.limit = std::nullopt;
    return firstReadable(queued(query));
}
TransactionPersistanceDelegate::Queued TransactionInDatabase::getTransactionsWithParentID(
    const std::string& transactionID) {
    return queued(inOrder().filter(columnIs(transactionColumns.ParentRecordID, transactionID)));
}

bool TransactionInDatabase::updateTransaciton(const std::string& transactionID, const std::optional<std::string>& error,
                                              const std::optional<std::string>& serverResponse,
                                              const std::optional<std::string>& extras) {
    ValueMap values;
    if (error) values.set(transactionColumns.ErrorMessage, *error);
    if (serverResponse) values.set(transactionColumns.ServerResponse, *serverResponse);
    if (extras) values.set(transactionColumns.Extras, *extras);
    return values.empty() || table_.update(std::move(values), isTransaction(transactionID));
}

TransactionPersistanceDelegate::Found TransactionInDatabase::getTransaction(const std::string& transactionID) {
    auto found = queued(inOrder().filter(isTransaction(transactionID)));
    if (found && found->transactions.empty() && !found->unreadable.empty())
        return ParserError::typeConversionFailedForKey(found->unreadable.front().column);
    return firstReadable(found);
}
TransactionPersistanceDelegate::Queued TransactionInDatabase::getTransactions() { return queued(inOrder()); }
TransactionPersistanceDelegate::Queued TransactionInDatabase::getTransactions(const std::string& recordID) {
    return queued(inOrder().filter(columnIs(transactionColumns.RecordID, recordID)));
}
TransactionPersistanceDelegate::Queued TransactionInDatabase::getTransactionsOfRecords(
    const std::vector<std::string>& recordIDs) {
    return queued(inOrder().filter(columnIn(transactionColumns.RecordID, recordIDs)));
}

TransactionPersistanceDelegate::Queued TransactionInDatabase::getTransactionsWithIds(
    const std::vector<std::string>& transactionIDs) {
    return queued(inOrder().filter(columnIn(transactionColumns.TransactionID, transactionIDs)));
}

bool TransactionInDatabase::markSending(const std::vector<std::string>& transactionIDs) {
    return table_.update(
        {{transactionColumn(&TransactionDatabaseConstants::Extras), std::string(Transaction::State::inProgress)}},
        columnIn(transactionColumns.TransactionID, transactionIDs));
}

bool TransactionInDatabase::makeReady(const std::vector<std::string>& transactionIDs) {
    if (transactionIDs.empty()) return true;
    ValueMap cleared;
    for (auto name : {transactionColumns.ErrorMessage, transactionColumns.ServerResponse, transactionColumns.Extras})
        cleared.set(name, Value());
    return table_.update(std::move(cleared), columnIn(transactionColumns.TransactionID, transactionIDs));
}

bool TransactionInDatabase::failUnreadable(const std::vector<std::int64_t>& rows) {
    return rows.empty() ||
           table_.update(
               {{transactionColumn(&TransactionDatabaseConstants::Extras), std::string(Transaction::State::error)}},
               Criteria::in("rowid", ValueList(rows.begin(), rows.end())));
}

std::optional<std::int64_t> TransactionInDatabase::highestTransactionTime() {
    // Some hundred thousand years after 1970: room for all that follow.
    constexpr std::int64_t farAway = std::int64_t(1) << 53;
    FetchQuery query(table_.name(), Criteria::custom(transactionTimeTerm() + " < ?", ValueList{farAway}));
    query.columns = {transactionTimeTerm() + " AS highest"};
    query.sortBy = {SortDescriptor::customOrderBy(transactionTimeTerm() + " DESC")};
    query.limit = 1;
    auto rows = table_.fetch(query);
    if (!rows) return std::nullopt;
    return rows->empty() ? 0 : std::max<std::int64_t>(rows->front().valueOf("highest").asInteger().value_or(0), 0);
}

bool TransactionInDatabase::prepare() {
    return table_.ensureIndex("BY_RECORD", std::string(transactionColumns.RecordID)) &&
           table_.ensureIndex("BY_TIME", transactionTimeTerm());
}

FetchQuery TransactionInDatabase::inOrder() const {
    FetchQuery query(table_.name());
    query.columns = {"*", "rowid AS " + std::string(rowNumberName)};
    query.sortBy = {SortDescriptor({.colName = std::string(transactionColumns.TransactionTime), .numeric = true}),
                    SortDescriptor::customOrderBy("rowid")};
    return query;
}

TransactionPersistanceDelegate::Queued TransactionInDatabase::queued(const FetchQuery& query) const {
    auto rows = table_.fetch(query);
    if (!rows) return std::nullopt;
    QueuedTransactions queued;
    for (auto row : *rows) {
        auto transaction = transactionColumns.getValue(row);
        if (transaction)
            queued.transactions.push_back(std::move(transaction).value());
        else
            queued.unreadable.push_back(unreadableOf(row, transaction.error()));
    }
    return queued;
}

}  // namespace tarvo
