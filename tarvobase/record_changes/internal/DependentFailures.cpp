#include "tarvobase/record_changes/internal/DependentFailures.h"

#include <algorithm>
#include <map>
#include <set>

#include "tarvobase/record_changes/internal/QueuedChange.h"
#include "tarvobase/record_changes/internal/SupersededEdits.h"
#include "tarvobase/transaction/TransactionWaiters.h"

namespace tarvo {

namespace {

/// A later edit of the record may be on its way already, since a failed one holds nothing up.
bool leaveOutLater(const Stores& stores, const Transaction& freed, const std::vector<Transaction>& queue) {
    if (freed.operationType != TransactionType::editRecord) return true;
    std::vector<Transaction> ofRecord;
    for (auto& row : queue)
        if (row.recordID == freed.recordID) ofRecord.push_back(row);
    return SupersededEdits::leaveOut(stores, freed, ofRecord);
}

/// Adds the records that are created by what waits in the current queue for a place.
void addArriving(const Stores& stores, std::int64_t place, std::set<std::string>& arriving) {
    auto dependencies = stores.transactionDependencies()->getAllTransitivesLookupDependencies(place);
    if (!dependencies) return;
    std::vector<std::int64_t> ids;
    for (auto& each : *dependencies) ids.push_back(each.transactionId);
    auto waiting = stores.currentTransactions()->getTransactionsWithIds(ids);
    if (!waiting) return;
    for (auto& each : *waiting)
        if (createsRecord(each.kind)) arriving.insert(each.recordId);
}

}  // namespace

std::optional<std::vector<std::string>> freeDependents(const Stores& stores, const std::string& recordId,
                                                       std::int64_t transactionNumber) {
    TransactionWaiters waiters(stores);
    if (transactionNumber && !waiters.recover(transactionNumber)) return std::nullopt;
    auto entries = stores.changeRegister()->refusedWith(ErrorResponse::dependingTransactionFailed().code);
    if (!entries) return std::nullopt;
    if (entries->empty()) return std::vector<std::string>();
    auto queued = stores.transactions()->getTransactions();
    if (!queued) return std::nullopt;
    FreeText freeText(stores);
    std::map<std::string, const ChangeEntry*> failed;
    std::set<std::string> arriving{recordId};
    if (transactionNumber) addArriving(stores, transactionNumber, arriving);
    for (auto& entry : *entries) failed[entry.transactionId] = &entry;
    std::vector<std::string> freed;
    for (bool foundMore = true; foundMore;) {
        foundMore = false;
        for (auto& row : queued->transactions) {
            auto entry = failed.find(row.transactionID);
            if (entry == failed.end()) continue;
            auto names = QueuedChange(row, freeText).temporaryIds;
            if (std::none_of(names.begin(), names.end(), [&](auto& id) { return arriving.contains(id); })) continue;
            if (!leaveOutLater(stores, row, queued->transactions)) return std::nullopt;
            auto number = entry->second->transactionNumber;
            if (!stores.changeRegister()->forgetRefusal(entry->second->number)) return std::nullopt;
            if (number && !waiters.recover(number)) return std::nullopt;
            if (number) addArriving(stores, number, arriving);
            failed.erase(entry);
            freed.push_back(row.transactionID);
            if (row.operationType == TransactionType::addRecord) foundMore |= arriving.insert(row.recordID).second;
        }
    }
    return stores.transactions()->makeReady(freed) ? std::optional(std::move(freed)) : std::nullopt;
}

}  // namespace tarvo
