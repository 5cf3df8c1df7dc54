#include "tarvobase/value_objects/transaction/TransactionDependencyInDatabase.h"

#include "platform/Log.h"
#include "tarvobase/storage/DatabasePersistanceClass.h"
#include "tarvobase/value_objects/transaction/NTransaction.h"

namespace tarvo {

namespace {

const TransactionDependencyDBMapper dependencyMapper;

}  // namespace

EnsuredTable TransactionDependencyInDatabase::tableOf(std::shared_ptr<DatabaseAdapter> databaseAdapter) {
    auto& names = dependencyMapper;
    std::string waiting(names.transactionId), awaited(names.dependentTransaction), type(names.type);
    return EnsuredTable(std::move(databaseAdapter), std::string(names.tableName),
                        {.columns = {{waiting, "INTEGER"}, {awaited, "INTEGER"}, {type, "INTEGER"}},
                         .keys = "UNIQUE (" + waiting + ", " + awaited + ", " + type + ")",
                         .indexed = {awaited}});
}

TransactionDependencyInDatabase::TransactionDependencyInDatabase(std::shared_ptr<DatabaseAdapter> databaseAdapter)
    : adapter_(std::move(databaseAdapter)), table_(tableOf(adapter_)) {}

bool TransactionDependencyInDatabase::storeTransactionDependencies(
    const std::vector<TransactionDependency>& dependencies) {
    return dependencies.empty() ||
           (table_.ensure() && adapter_->insertInto(table_.name(), dependencyMapper.getDictionary(dependencies)));
}

bool TransactionDependencyInDatabase::deleteTransactionDependency(std::int64_t transactionId) {
    return table_.remove(Criteria::equalTo(std::string(dependencyMapper.dependentTransaction), transactionId));
}

TransactionDependencyPersistence::Dependencies TransactionDependencyInDatabase::getTransactionDependencies(
    const Ids& dependentOn, const Kinds& kinds) {
    ValueList rawKinds;
    for (auto kind : kinds) rawKinds.push_back(static_cast<std::int64_t>(kind));
    return dependenciesOf(
        table_.fetch(Criteria::and_({Criteria::in(std::string(dependencyMapper.dependentTransaction),
                                                  ValueList(dependentOn.begin(), dependentOn.end())),
                                     Criteria::in(std::string(dependencyMapper.type), std::move(rawKinds))})));
}
TransactionDependencyPersistence::Dependencies TransactionDependencyInDatabase::getTransactionDependencies() {
    return dependenciesOf(table_.fetch(FetchQuery(table_.name())));
}

// UNION finds each row once, so that neither a cycle nor many ways to one transaction cost more than the table is long.
TransactionDependencyPersistence::Dependencies TransactionDependencyInDatabase::getAllTransitivesLookupDependencies(
    std::int64_t transactionId) {
    if (!table_.ensure()) return std::nullopt;
    return dependenciesOf(adapter_->fetchObjects(
        "WITH RECURSIVE waiting(txn_id, dependent_txn, type) AS (VALUES(?, NULL, NULL) UNION SELECT td.txn_id, "
        "td.dependent_txn, td.type FROM TRANSACTIONS_DEPENDENCY td JOIN waiting ON td.dependent_txn = waiting.txn_id "
        "WHERE td.type = ?) SELECT txn_id, dependent_txn, type FROM waiting WHERE dependent_txn IS NOT NULL",
        ValueList{transactionId, static_cast<std::int64_t>(TransactionDependency::Kind::lookupRecord)}));
}

bool TransactionDependencyInDatabase::removeTransactionDependencies(
    const std::vector<TransactionDependency>& dependencies) {
    std::vector<DatabaseAdapter::Statement> statements;
    for (auto& dependency : dependencies) {
        std::vector<Criteria> isIt;
        for (auto& entry : dependencyMapper.getDictionary(dependency))
            isIt.push_back(Criteria::equalTo(std::string(entry.name), entry.value));
        DeleteQuery query(table_.name(), Criteria::and_(std::move(isIt)));
        statements.push_back({query.sql(), query.parameters()});
    }
    return statements.empty() || table_.execute(statements);
}

std::optional<TransactionDependencyPersistence::Ids> TransactionDependencyInDatabase::removeDanglingDependencies(
    const Ids& alsoPresent) {
    std::string waiting(dependencyMapper.transactionId), awaited(dependencyMapper.dependentTransaction);
    std::string isInQueue(" NOT IN (SELECT txn_id FROM " + std::string(TransactionDBMapper().tableName) + ")");
    auto isGone = [&](const std::string& column) {
        return Criteria::and_({Criteria::custom(column + isInQueue),
                               Criteria::notIn(column, ValueList(alsoPresent.begin(), alsoPresent.end()))});
    };
    auto isDangling = Criteria::or_({isGone(waiting), isGone(awaited)});
    FetchQuery query(table_.name(), isDangling);
    query.columns = {"DISTINCT " + waiting};
    auto rows = table_.fetch(query);
    if (!rows) return std::nullopt;
    Ids waited;
    for (auto row : *rows) waited.push_back(row.valueOf(waiting).asInteger().value_or(0));
    if (!waited.empty() && !table_.remove(isDangling)) return std::nullopt;
    return waited;
}

TransactionDependencyPersistence::Dependencies TransactionDependencyInDatabase::dependenciesOf(
    const std::optional<Rows>& rows) const {
    return TableAccess(adapter_, table_.name()).readableOf(rows, [](const Row& row) {
        return dependencyMapper.getValue(row);
    });
}

}  // namespace tarvo
