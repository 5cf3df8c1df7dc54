#include "tarvobase/transaction/TransactionManager.h"

#include <algorithm>

#include "tarvobase/transaction/TemporaryIdsInPayload.h"
#include "tarvobase/utils/TemporaryIds.h"

namespace tarvo {

bool TransactionManager::addTransaction(const NTransaction& transaction, const RecordIds& lookupRecords,
                                        const Dependencies& dependencies) {
    return inOneCommit("add a transaction", [&] {
        auto current = withAliases(transaction);
        if (!current) return false;
        auto records = lookupRecords;
        records.insert(records.begin(), current->recordId);
        auto all = getLookupDependenceis(current->id, records);
        if (!all) return false;
        all->insert(all->end(), dependencies.begin(), dependencies.end());
        return addTransactions({*current}, *all);
    });
}

bool TransactionManager::addMergedTransaction(const NTransaction& transaction, const RecordIds& lookupRecords,
                                              const Ids& mergedTransactions, Attempts attempts) {
    return inOneCommit("merge a transaction", [&] {
        auto current = withAliases(transaction);
        if (!current) return false;
        auto records = lookupRecords;
        if (!isCreateState(current->kind)) records.push_back(current->recordId);
        auto dependencies = getLookupDependenceis(current->id, records);
        return dependencies && addMergedTransaction(*current, *dependencies, mergedTransactions, attempts);
    });
}

/// A screen may name a record by its temporary id long after the server gave it another one. Returns nullopt if the
/// ids cannot be read.
std::optional<NTransaction> TransactionManager::withAliases(const NTransaction& transaction) {
    FreeText freeText(stores_);
    auto named = temporaryIdsOf(transaction, freeText);
    if (isTemporaryRecordId(transaction.recordId)) named.push_back(transaction.recordId);
    if (named.empty()) return transaction;
    auto aliases = stores_.recordIdAliases()->aliasesOf(named);
    if (!aliases) return std::nullopt;
    if (aliases->empty()) return transaction;
    Identifiers identifiers;
    for (auto& alias : *aliases) identifiers[alias.temporaryId] = alias.realId;
    auto current = transaction;
    if (auto found = identifiers.find(current.recordId); found != identifiers.end()) current.recordId = found->second;
    replaceIds(current, identifiers, freeText);
    return current;
}

/// A transaction waits for what still has to create a record that it names.
std::optional<TransactionManager::Dependencies> TransactionManager::getLookupDependenceis(std::int64_t transactionId,
                                                                                          const RecordIds& records) {
    RecordIds temporary;
    for (auto& id : records)
        if (isTemporaryRecordId(id)) temporary.push_back(id);
    if (temporary.empty()) return Dependencies();
    auto creating = txnPersistence_->getTransactionIdsWithRecordIds(temporary, createTransactionKinds_);
    if (!creating) return std::nullopt;
    Dependencies dependencies;
    for (auto id : *creating)
        if (id != transactionId) dependencies.push_back({transactionId, id, TransactionDependency::Kind::lookupRecord});
    for (auto& id : temporary) {
        auto numbers = numbersOfOlderAdds(id);
        if (!numbers) return std::nullopt;
        for (auto number : *numbers)
            dependencies.push_back({transactionId, number, TransactionDependency::Kind::lookupRecord});
    }
    return dependencies;
}

/// Returns the places of a record's adds in the older queue.
std::optional<TransactionManager::Ids> TransactionManager::numbersOfOlderAdds(const std::string& recordId) {
    auto queued = stores_.transactions()->getTransactions(recordId);
    if (!queued) return std::nullopt;
    Ids numbers;
    for (auto& row : queued->transactions) {
        if (row.operationType != TransactionType::addRecord) continue;
        auto entry = stores_.changeRegister()->enter(ChangeQueue::older, row.transactionID);
        if (!entry) return std::nullopt;
        // One that an older program has queued gets its place with the first that waits for it.
        auto number = entry->transactionNumber ? entry->transactionNumber : getNewTransactionId();
        if (!entry->transactionNumber && !stores_.changeRegister()->setTransactionNumber(entry->number, number))
            return std::nullopt;
        numbers.push_back(number);
    }
    return numbers;
}

std::optional<bool> TransactionManager::isCreateAndDestoryTransaction(const std::string& recordId,
                                                                      NTransaction::Kind create,
                                                                      NTransaction::Kind destroy) {
    auto all = getTransactions(recordId, std::nullopt, std::nullopt);
    if (!all) return std::nullopt;
    if (all->size() != 2) return false;
    auto has = [&](NTransaction::Kind kind) { return all->front().kind == kind || all->back().kind == kind; };
    if (!has(create) || !has(destroy)) return false;
    using Kind = TransactionDependency::Kind;
    Ids pair{all->front().id, all->back().id};
    auto waiting = txnDependencyPersistence_->getTransactionDependencies(pair, {Kind::lookupRecord, Kind::sameRecord});
    if (!waiting) return std::nullopt;
    return std::all_of(waiting->begin(), waiting->end(), [&](auto& dependency) {
        return dependency.transactionId == pair[0] || dependency.transactionId == pair[1];
    });
}

TransactionManager::Transactions TransactionManager::getTransactions(const std::string& recordId,
                                                                     const std::optional<Kinds>& kinds,
                                                                     std::optional<std::int64_t> limit) {
    return txnPersistence_->getTransactionsWithRecordIds({recordId}, kinds, limit);
}

TransactionManager::Transactions TransactionManager::getLastTransaction(const std::string& recordId,
                                                                        const Kinds& kinds) {
    return txnPersistence_->getLastTransaction(recordId, kinds);
}

}  // namespace tarvo
