#include "tarvobase/value_objects/transaction/NTransactionInDatabase.h"

#include <algorithm>

#include "platform/Json.h"
#include "platform/Log.h"
#include "tarvobase/storage/DatabasePersistanceClass.h"
#include "tarvobase/value_objects/transaction/ChangeRegisterInDatabase.h"
#include "tarvobase/value_objects/transaction/TransactionDependencyInDatabase.h"

namespace tarvo {

namespace {

using QueueStatement = DatabaseAdapter::Statement;

const TransactionDBMapper queueMapper;
const TransactionDependencyDBMapper queueDependencyMapper;

// The columns as statements and conditions take them.
const std::string txnId(queueMapper.id), txnRecordId(queueMapper.recordId), txnType(queueMapper.type),
    txnPayload(queueMapper.payload), txnError(queueMapper.errorResponse), txnStatus(queueMapper.status),
    txnAttempt(queueMapper.syncAttempt), waitingTxn(queueDependencyMapper.transactionId),
    awaitedTxn(queueDependencyMapper.dependentTransaction);

// Some quadrillion ids: room for all that follow.
constexpr std::int64_t highestUsableId = std::int64_t(1) << 53;

EnsuredTable tableOfTransactions(std::shared_ptr<DatabaseAdapter> databaseAdapter) {
    auto column = [](std::string_view name, std::string type) {
        return EnsuredTable::Column{std::string(name), std::move(type)};
    };
    auto& names = queueMapper;
    return EnsuredTable(
        std::move(databaseAdapter), std::string(names.tableName),
        {.columns = {column(names.id, "INTEGER PRIMARY KEY"), column(names.recordId, "TEXT"),
                     column(names.module, "TEXT"), column(names.type, "INTEGER"), column(names.payload, "TEXT"),
                     column(names.errorResponse, "TEXT"), column(names.status, "INTEGER"),
                     column(names.mergeCount, "INTEGER"), column(names.syncAttempt, "INTEGER")},
         .keys = "",
         .indexed = {std::string(names.recordId)}});
}

QueueStatement queueStatement(const Query& query) { return {query.sql(), query.parameters()}; }

ValueList idValues(const std::vector<std::int64_t>& ids) { return ValueList(ids.begin(), ids.end()); }
ValueList rawKinds(const std::vector<NTransaction::Kind>& kinds) {
    ValueList raw;
    for (auto kind : kinds) raw.push_back(static_cast<std::int64_t>(kind));
    return raw;
}
std::int64_t rawStatus(NTransaction::Status::Case status) { return static_cast<std::int64_t>(status); }

Criteria hasId(std::int64_t id) { return Criteria::equalTo(txnId, id); }
Criteria hasIdIn(const std::vector<std::int64_t>& ids) { return Criteria::in(txnId, idValues(ids)); }

Criteria hasStatusIn(const std::vector<NTransaction::Status::Case>& cases) {
    ValueList raw;
    for (auto one : cases) raw.push_back(rawStatus(one));
    return Criteria::in(txnStatus, std::move(raw));
}

FetchQuery inOrderOfIds(const EnsuredTable& table, Criteria criteria) {
    FetchQuery query(table.name(), std::move(criteria));
    query.sortBy = {SortDescriptor::customOrderBy(txnId)};
    return query;
}

/// Returns the row of a transaction, or nullopt if it could not be read back.
std::optional<ValueMap> rowOf(const NTransaction& transaction) {
    auto row = queueMapper.getDictionary(transaction);
    auto readBack = queueMapper.getValue(row);
    if (readBack) return row;
    platform::log(platform::LogLevel::warning, "transaction", "error making query: " + readBack.error().failedPath);
    return std::nullopt;
}

/// A row that is there already fails the statement: it is a change that nobody has sent.
QueueStatement storeOf(const EnsuredTable& table, ValueMap row) {
    InsertQuery insert(table.name(), std::move(row));
    insert.replaceOnConflict = false;
    return queueStatement(insert);
}

void addDependencies(std::vector<QueueStatement>& statements, const EnsuredTable& table,
                     const std::vector<TransactionDependency>& dependencies) {
    for (auto& dependency : dependencies)
        statements.push_back(
            queueStatement(InsertQuery(table.name(), queueDependencyMapper.getDictionary(dependency))));
}

UnreadableNTransaction unreadableTransaction(const Row& row, std::string column) {
    auto error = row.valueOf(txnError);
    return {.id = row.valueOf(txnId).asInteger().value_or(0),
            .recordId = row.valueOf(txnRecordId).textOr(""),
            .column = std::move(column),
            .hasError = !error.isNull() && error.textOr("error") != ""};
}

std::optional<QueuedNTransactions> queuedTransactions(const std::optional<Rows>& rows) {
    if (!rows) return std::nullopt;
    QueuedNTransactions queued;
    for (auto row : *rows) {
        auto transaction = queueMapper.getValue(row);
        if (transaction)
            queued.transactions.push_back(std::move(transaction).value());
        else
            queued.unreadable.push_back(unreadableTransaction(row, transaction.error().failedPath));
    }
    return queued;
}

/// Returns the transactions of rows, or nullopt if one of them cannot be read.
TransactionPersistence::Transactions allTransactions(const EnsuredTable& table, const std::optional<Rows>& rows) {
    return TableAccess(nullptr, table.name()).allOrNone(rows, [](const Row& row) { return queueMapper.getValue(row); });
}

}  // namespace

NTransactionInDatabase::NTransactionInDatabase(std::shared_ptr<DatabaseAdapter> databaseAdapter,
                                               std::optional<std::string> organisation, const std::string& olderTable)
    : adapter_(std::move(databaseAdapter)),
      organisation_(std::move(organisation)),
      order_(adapter_, olderTable),
      transactions_(tableOfTransactions(adapter_)),
      dependencies_(TransactionDependencyInDatabase::tableOf(adapter_)) {}

bool NTransactionInDatabase::storeTransactions(const std::vector<NTransaction>& transactions,
                                               const Dependencies& dependencies) {
    std::vector<QueueStatement> statements;
    for (auto& transaction : transactions) {
        auto row = rowOf(transaction);
        if (!row) return false;
        statements.push_back(storeOf(transactions_, *std::move(row)));
    }
    addDependencies(statements, dependencies_, dependencies);
    return execute(statements);
}

TransactionPersistence::Transactions NTransactionInDatabase::getTransactionsWithIds(const Ids& ids) {
    return allTransactions(transactions_, fetch(inOrderOfIds(transactions_, hasIdIn(ids))));
}
TransactionPersistence::Transactions NTransactionInDatabase::getTransactionsWithRecordIds(
    const RecordIds& recordIds, const std::optional<Kinds>& kinds, std::optional<std::int64_t> limit) {
    auto query = inOrderOfIds(transactions_, columnIn(txnRecordId, recordIds));
    if (kinds) query.filter(Criteria::in(txnType, rawKinds(*kinds)));
    query.limit = limit;
    return allTransactions(transactions_, fetch(query));
}
std::optional<TransactionPersistence::Ids> NTransactionInDatabase::getTransactionIdsWithRecordIds(
    const RecordIds& recordIds, const Kinds& kinds) {
    return idsWhere(Criteria::and_({columnIn(txnRecordId, recordIds), Criteria::in(txnType, rawKinds(kinds))}));
}
std::optional<TransactionPersistence::Ids> NTransactionInDatabase::getTransactionIdsWithStatus(
    const std::vector<NTransaction::Status::Case>& cases) {
    return idsWhere(hasStatusIn(cases));
}
std::optional<TransactionPersistence::Ids> NTransactionInDatabase::idsWhere(Criteria criteria) const {
    auto query = inOrderOfIds(transactions_, std::move(criteria));
    query.columns = {txnId};
    auto rows = fetch(query);
    if (!rows) return std::nullopt;
    Ids ids;
    for (auto row : *rows) ids.push_back(row.valueOf(txnId).asInteger().value_or(0));
    return ids;
}

std::optional<QueuedNTransactions> NTransactionInDatabase::getTransactionsOfRecords(const RecordIds& recordIds,
                                                                                    const Kinds& kinds) {
    auto query = inOrderOfIds(transactions_, columnIn(txnRecordId, recordIds));
    query.filter(Criteria::in(txnType, rawKinds(kinds)));
    // Values of the server are stored with every page, so that a missing table is not made here.
    return queuedTransactions(transactions_.fetch(query));
}

TransactionPersistence::Transactions NTransactionInDatabase::getTransactionsNaming(const std::string& recordId) {
    auto query = inOrderOfIds(transactions_, Criteria::custom("instr(" + txnPayload + ", ?) > 0", ValueList{recordId}));
    query.filter(Criteria::notEqualTo(txnRecordId, recordId));
    return allTransactions(transactions_, fetch(query));
}

std::optional<std::map<std::int64_t, std::string>> NTransactionInDatabase::getPayload(const Ids& ids,
                                                                                      const RecordIds& recordIds) {
    FetchQuery query(transactions_.name(), Criteria::or_({hasIdIn(ids), columnIn(txnRecordId, recordIds)}));
    query.columns = {txnId, txnPayload};
    auto rows = fetch(query);
    if (!rows) return std::nullopt;
    std::map<std::int64_t, std::string> payloads;
    for (auto row : *rows) {
        auto id = row.valueOf(txnId).asInteger();
        auto payload = row.valueOf(txnPayload);
        if (id && payload.asText()) payloads.emplace(*id, *payload.asText());
    }
    return payloads;
}

bool NTransactionInDatabase::deleteTransactionWithIds(const Ids& ids) {
    std::vector<QueueStatement> statements;
    for (auto id : ids) {
        statements.push_back(queueStatement(
            DeleteQuery(dependencies_.name(),
                        Criteria::or_({Criteria::equalTo(waitingTxn, id), Criteria::equalTo(awaitedTxn, id)}))));
        statements.push_back(queueStatement(DeleteQuery(transactions_.name(), hasId(id))));
    }
    return execute(statements);
}
bool NTransactionInDatabase::deleteTransactionWithRecordId(const std::string& recordId) {
    DeleteQuery transactions(transactions_.name(), columnIs(txnRecordId, recordId));
    return execute({{"DELETE FROM TRANSACTIONS_DEPENDENCY WHERE txn_id IN (SELECT txn_id FROM TRANSACTIONS_NEW WHERE "
                     "record_id = ?) OR dependent_txn IN (SELECT txn_id FROM TRANSACTIONS_NEW WHERE record_id = ?)",
                     ValueList{recordId, recordId}},
                    queueStatement(transactions)});
}

bool NTransactionInDatabase::clearError(const Ids& ids) {
    return ids.empty() || transactions_.update({{txnError, Value()}}, hasIdIn(ids));
}
bool NTransactionInDatabase::setTransactionErrors(const std::map<std::int64_t, ErrorResponse>& errors) {
    std::vector<QueueStatement> statements;
    for (auto& [id, error] : errors) {
        auto text = json::write(Value(error.toJSON()));
        if (!text) {
            platform::log(platform::LogLevel::warning, "transaction",
                          "an error holds details that JSON cannot express: no error is stored");
            return false;
        }
        statements.push_back(
            queueStatement(UpdateQuery(transactions_.name(), {{txnError, *std::move(text)}}).filter(hasId(id))));
    }
    return execute(statements);
}
bool NTransactionInDatabase::setSyncAttempt(std::int64_t syncAttempt, NTransaction::Status status, std::int64_t id) {
    return transactions_.update({{txnAttempt, syncAttempt}, {txnStatus, rawStatus(status.which)}}, hasId(id));
}
bool NTransactionInDatabase::setStatus(NTransaction::Status status, const Ids& ids) {
    return ids.empty() || transactions_.update({{txnStatus, rawStatus(status.which)}}, hasIdIn(ids));
}
bool NTransactionInDatabase::replaceStatus(const std::vector<NTransaction::Status::Case>& former,
                                           NTransaction::Status status) {
    return transactions_.update({{txnStatus, rawStatus(status.which)}}, hasStatusIn(former));
}
bool NTransactionInDatabase::update(const std::map<std::string, std::string>& recordIds,
                                    const std::map<std::int64_t, std::string>& payloads) {
    std::vector<QueueStatement> statements;
    for (auto& [former, recordId] : recordIds)
        statements.push_back(queueStatement(
            UpdateQuery(transactions_.name(), {{txnRecordId, recordId}}).filter(columnIs(txnRecordId, former))));
    for (auto& [id, payload] : payloads)
        statements.push_back(
            queueStatement(UpdateQuery(transactions_.name(), {{txnPayload, payload}}).filter(hasId(id))));
    return execute(statements);
}

// The table's key is the order, so SQLite walks it and stops at the first row that fits; the key of the dependencies
// answers whether a row waits.
TransactionPersistence::Found NTransactionInDatabase::getNextRunnableTransaction(const Kinds& kinds) {
    auto first = [&](const std::string& limit) {
        auto others = joinOfOtherOrganisations(), isFirst = order_.isFirst();
        ValueList parameters;
        if (!others.empty()) parameters.push_back(*organisation_);
        for (auto& kind : rawKinds(kinds)) parameters.push_back(kind);
        parameters.push_back(rawStatus(NTransaction::Status::Case::active));
        return fetch(
            RawQuery("SELECT txn.* FROM TRANSACTIONS_NEW txn LEFT JOIN TRANSACTIONS_DEPENDENCY txn_dep ON txn.txn_id = "
                     "txn_dep.txn_id" +
                         others + " WHERE txn_dep.txn_id IS NULL" + (others.empty() ? "" : " AND made.number IS NULL") +
                         " AND (txn.error_response IS NULL OR txn.error_response = '') AND txn.txn_type IN (" +
                         placeholders(kinds.size()) + ") AND txn.status = ?" +
                         (isFirst.empty() ? "" : " AND " + isFirst) + " ORDER BY txn.txn_id" + limit,
                     std::move(parameters)));
    };
    auto rows = first(" LIMIT 1");
    if (rows && !rows->empty() && !queueMapper.getValue(rows->front())) rows = first("");
    auto readable = TableAccess(nullptr, transactions_.name()).readableOf(rows, [](const Row& row) {
        return queueMapper.getValue(row);
    });
    if (!readable) return ParserError::noData();
    return readable->empty() ? std::nullopt : std::optional(std::move(readable->front()));
}

/// Returns the join with the entry of a transaction that was made in another organisation, which is sent when that one
/// is in force again. It comes after the join with the dependencies, so that SQLite looks for no entry of a transaction
/// that waits. Returns the empty text if nothing is known of organisations.
std::string NTransactionInDatabase::joinOfOtherOrganisations() const {
    using Register = ChangeRegisterTable;
    if (!organisation_ || !adapter_ || adapter_->columnNames(Register::name).empty()) return {};
    return std::string(" LEFT JOIN ") + Register::name + " made ON made." + Register::queue + " = 'current' AND made." +
           Register::transactionId + " = CAST(txn.txn_id AS TEXT) AND made." + Register::organisation + " <> ?";
}

bool NTransactionInDatabase::addMergedTransaction(const NTransaction& transaction, const Dependencies& dependencies,
                                                  const Ids& merged) {
    auto row = rowOf(transaction);
    if (!row) return false;
    Ids folded;
    std::copy_if(merged.begin(), merged.end(), std::back_inserter(folded),
                 [&](auto id) { return id != transaction.id; });
    auto all = folded;
    all.push_back(transaction.id);

    auto waitsForFolded = Criteria::in(awaitedTxn, idValues(folded));
    UpdateQuery waitForSurvivor(dependencies_.name(), {{awaitedTxn, transaction.id}});
    waitForSurvivor.filter(waitsForFolded);
    waitForSurvivor.ignoreOnError = true;  // one that waits for the survivor already

    std::vector<QueueStatement> statements{
        queueStatement(DeleteQuery(dependencies_.name(), Criteria::in(waitingTxn, idValues(all)))),
        queueStatement(DeleteQuery(transactions_.name(), hasIdIn(all))), storeOf(transactions_, *std::move(row)),
        queueStatement(waitForSurvivor), queueStatement(DeleteQuery(dependencies_.name(), waitsForFolded))};
    addDependencies(statements, dependencies_, dependencies);
    return execute(statements);
}

TransactionPersistence::Transactions NTransactionInDatabase::getLastTransaction(const std::string& recordId,
                                                                                const Kinds& kinds) {
    return allTransactions(transactions_, lastRows("a.*", recordId, kinds));
}
std::optional<std::map<NTransaction::Kind, std::int64_t>> NTransactionInDatabase::getLastTransactionId(
    const std::string& recordId, const Kinds& kinds) {
    auto rows = lastRows("a.txn_type, a.txn_id", recordId, kinds);
    if (!rows) return std::nullopt;
    std::map<NTransaction::Kind, std::int64_t> ids;
    for (auto row : *rows) {
        auto kind = fromRawInteger<NTransaction::Kind>(row.valueOf(txnType).asInteger().value_or(-1));
        if (kind) ids[*kind] = row.valueOf(txnId).asInteger().value_or(0);
    }
    return ids;
}
std::optional<Rows> NTransactionInDatabase::lastRows(const std::string& columns, const std::string& recordId,
                                                     const Kinds& kinds) const {
    ValueList parameters{recordId};
    for (auto& raw : rawKinds(kinds)) parameters.push_back(raw);
    return fetch(RawQuery("SELECT " + columns +
                              " FROM TRANSACTIONS_NEW a INNER JOIN (SELECT txn_type, MAX(txn_id) id FROM "
                              "TRANSACTIONS_NEW WHERE record_id = ? AND txn_type IN (" +
                              placeholders(kinds.size()) +
                              ") GROUP BY txn_type) b ON a.txn_id = b.id ORDER BY a.txn_id",
                          std::move(parameters)));
}

bool NTransactionInDatabase::prepare() { return transactions_.ensureIndexes() && dependencies_.ensureIndexes(); }

std::optional<QueuedNTransactions> NTransactionInDatabase::getTransactions() {
    FetchQuery query(transactions_.name());
    query.sortBy = {SortDescriptor::customOrderBy(txnId)};
    return queuedTransactions(fetch(query));
}

// Each of the three reads one entry of an index. New ids ask for it.
std::optional<std::int64_t> NTransactionInDatabase::highestTransactionId() {
    return highest(RawQuery(
        "SELECT MAX(id) AS highest FROM (SELECT MAX(txn_id) AS id FROM TRANSACTIONS_NEW WHERE txn_id < ? UNION ALL "
        "SELECT MAX(txn_id) FROM TRANSACTIONS_DEPENDENCY WHERE txn_id < ? UNION ALL SELECT MAX(dependent_txn) FROM "
        "TRANSACTIONS_DEPENDENCY WHERE dependent_txn < ?)",
        ValueList(3, Value(highestUsableId))));
}
std::optional<std::int64_t> NTransactionInDatabase::highest(const Query& query) const {
    auto rows = fetch(query);
    if (!rows) return std::nullopt;
    return rows->empty() ? 0 : std::max<std::int64_t>(rows->front().valueOf("highest").asInteger().value_or(0), 0);
}

std::optional<Rows> NTransactionInDatabase::fetch(const Query& query) const {
    if (!transactions_.ensure() || !dependencies_.ensure()) return std::nullopt;
    return adapter_->fetchObjects(query.sql(), query.parameters());
}
bool NTransactionInDatabase::execute(const std::vector<QueueStatement>& statements) const {
    return statements.empty() || (dependencies_.ensure() && transactions_.execute(statements));
}

}  // namespace tarvo
