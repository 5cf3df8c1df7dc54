#include "tarvobase/transaction/TransactionWaiters.h"

#include <algorithm>
#include <set>
#include <utility>

#include "platform/Json.h"
#include "tarvobase/database_layer/TransactionEnd.h"
#include "tarvobase/transaction/ChangeNotices.h"
#include "tarvobase/transaction/TemporaryIdsInPayload.h"

namespace tarvo {

namespace {

std::vector<std::string> textsOfIds(const std::vector<std::int64_t>& ids) {
    std::vector<std::string> texts;
    for (auto id : ids) texts.push_back(std::to_string(id));
    return texts;
}

template <class Map>
auto keysOf(const Map& map) {
    std::vector<typename Map::key_type> keys;
    for (auto& each : map) keys.push_back(each.first);
    return keys;
}

/// By transaction, those that it waits for.
std::map<std::int64_t, std::set<std::int64_t>> waitersOf(std::int64_t id,
                                                         const std::vector<TransactionDependency>& dependencies) {
    std::map<std::int64_t, std::set<std::int64_t>> waiters;
    for (auto& dependency : dependencies)
        if (dependency.transactionId != id) waiters[dependency.transactionId].insert(dependency.dependentTransaction);
    return waiters;
}

bool containsAny(const std::string& text, const TransactionWaiters::Identifiers& identifiers) {
    return std::any_of(identifiers.begin(), identifiers.end(),
                       [&](auto& each) { return text.find(each.first) != std::string::npos; });
}

}  // namespace

TransactionWaiters::TransactionWaiters(const Stores& stores) : stores_(stores) {}

bool TransactionWaiters::fail(std::int64_t id, const ErrorResponse& error) const {
    auto dependencies = stores_.transactionDependencies()->getAllTransitivesLookupDependencies(id);
    if (!dependencies) return false;
    std::map<std::int64_t, ErrorResponse> errors{{id, error}};
    for (auto& [waiter, others] : waitersOf(id, *dependencies)) {
        auto failed = ErrorResponse::dependingTransactionFailed();
        failed.details = ValueMap{{"ids", ValueList(others.begin(), others.end())}};
        errors.emplace(waiter, std::move(failed));
    }
    return stores_.currentTransactions()->setTransactionErrors(errors) && notifyOfErrors(errors);
}

bool TransactionWaiters::notifyOfErrors(const std::map<std::int64_t, ErrorResponse>& errors) const {
    auto ids = keysOf(errors);
    auto stored = readableAmong(ids);
    auto entries = stores_.changeRegister()->entriesOf(ChangeQueue::current, textsOfIds(ids));
    if (!stored || !entries) return false;
    std::map<std::string, const ChangeEntry*> entryOf;
    for (auto& entry : *entries) entryOf[entry.transactionId] = &entry;
    for (auto& transaction : *stored)
        if (auto entry = entryOf.find(std::to_string(transaction.id)); entry != entryOf.end())
            afterCommit([change = Change::of(transaction, *entry->second), error = errors.at(transaction.id)] {
                changeNotices::refused(change, error);
            });
    return true;
}

std::optional<std::vector<NTransaction>> TransactionWaiters::readableAmong(const Ids& ids) const {
    if (auto all = stores_.currentTransactions()->getTransactionsWithIds(ids)) return all;
    auto queued = stores_.currentTransactions()->getTransactions();
    if (!queued) return std::nullopt;
    std::erase_if(queued->transactions,
                  [&](auto& each) { return std::find(ids.begin(), ids.end(), each.id) == ids.end(); });
    return std::move(queued->transactions);
}

bool TransactionWaiters::recover(std::int64_t id) const {
    auto dependencies = stores_.transactionDependencies()->getAllTransitivesLookupDependencies(id);
    if (!dependencies) return false;
    auto waiters = keysOf(waitersOf(id, *dependencies));
    return waiters.empty() || stores_.currentTransactions()->clearError(waiters);
}

bool TransactionWaiters::replaceRecordIdentifiers(const Identifiers& identifiers, std::int64_t id) const {
    if (identifiers.empty()) return true;
    auto waiting = stores_.transactionDependencies()->getTransactionDependencies(
        {id}, {TransactionDependency::Kind::lookupRecord});
    if (!waiting) return false;
    Ids waiters;
    for (auto& dependency : *waiting) waiters.push_back(dependency.transactionId);
    auto payloads = stores_.currentTransactions()->getPayload(waiters, keysOf(identifiers));
    if (!payloads) return false;
    Ids candidates;
    for (auto& [candidate, payload] : *payloads)
        if (candidate != id && containsAny(payload, identifiers)) candidates.push_back(candidate);
    auto naming = readableAmong(candidates);
    if (!naming) return false;
    FreeText freeText(stores_);
    std::map<std::int64_t, std::string> rewritten;
    for (auto& transaction : *naming) {
        if (!replaceIds(transaction, identifiers, freeText)) continue;
        auto payload = json::write(transaction.payload);
        if (!payload) return false;
        rewritten.emplace(transaction.id, *std::move(payload));
    }
    return stores_.currentTransactions()->update(identifiers, rewritten) && renewKeys(rewritten);
}

bool TransactionWaiters::renewKeys(const std::map<std::int64_t, std::string>& rewritten) const {
    auto entries = stores_.changeRegister()->entriesOf(ChangeQueue::current, textsOfIds(keysOf(rewritten)));
    return entries && std::all_of(entries->begin(), entries->end(), [&](auto& entry) {
               return entry.sends == 0 || stores_.changeRegister()->renewKey(entry.number).has_value();
           });
}

bool TransactionWaiters::release(std::int64_t id) const {
    return stores_.transactionDependencies()->deleteTransactionDependency(id);
}

}  // namespace tarvo
