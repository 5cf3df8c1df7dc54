#include "tarvobase/record_changes/QueuedChanges.h"

#include <algorithm>
#include <map>

#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/record_changes/ChangePayload.h"
#include "tarvobase/record_changes/internal/ChangeTurns.h"
#include "tarvobase/record_changes/internal/DependentFailures.h"
#include "tarvobase/records/RecordUtil.h"

namespace tarvo {

namespace {

using Turn = ChangeTurns::Turn;

Change::State stateOf(const QueuedChange& row, Turn turn) {
    if (row.hasFailed()) return Change::State::failed;
    if (row.isSending()) return Change::State::sending;
    return turn == Turn::wait || turn == Turn::notSendable ? Change::State::waiting : Change::State::ready;
}

}  // namespace

std::optional<std::vector<Change>> QueuedChanges::list() const {
    auto queued = stores_.transactions()->getTransactions();
    auto entries = stores_.changeRegister()->entries();
    if (!queued || !entries) return std::nullopt;
    std::map<std::string, const ChangeEntry*> entryOf;
    for (auto& entry : *entries)
        if (entry.queue == ChangeQueue::older) entryOf[entry.transactionId] = &entry;
    std::vector<QueuedChange> rows(queued->transactions.begin(), queued->transactions.end());
    ChangeTurns turns(rows);
    std::map<std::string, TransactionType> kinds;
    for (auto& row : rows) kinds[row.transaction.transactionID] = row.transaction.operationType;
    std::vector<Change> changes;
    for (auto& row : rows) {
        auto judgement = turns.judge(row);
        auto& transaction = row.transaction;
        Change change{.transactionId = transaction.transactionID,
                      .kind = transaction.operationType,
                      .moduleName = transaction.moduleName,
                      .recordId = transaction.recordID,
                      .state = stateOf(row, judgement.turn)};
        if (auto entry = entryOf.find(transaction.transactionID); entry != entryOf.end()) {
            change.number = entry->second->number;
            change.enteredAt = entry->second->enteredAt;
            change.attempts = entry->second->sends;
            change.error = entry->second->lastRefusal;
        }
        if (judgement.turn == Turn::notSendable) change.waitingFor = {Change::Reason::notSendable, {}};
        if (judgement.turn == Turn::wait) {
            Change::WaitingFor waitingFor;
            for (auto& id : judgement.waitsFor) {
                if (auto entry = entryOf.find(id); entry != entryOf.end())
                    waitingFor.numbers.push_back(entry->second->number);
                bool isAdd = kinds[id] == TransactionType::addRecord;
                if (isAdd && !row.temporaryIds.empty()) waitingFor.reason = Change::Reason::newRecord;
            }
            change.waitingFor = std::move(waitingFor);
        }
        changes.push_back(std::move(change));
    }
    return changes;
}

std::optional<QueuedChanges::Content> QueuedChanges::content(std::int64_t number) const {
    auto changes = list();
    if (!changes) return std::nullopt;
    auto found = std::find_if(changes->begin(), changes->end(), [&](auto& change) { return change.number == number; });
    if (found == changes->end()) return std::nullopt;
    auto row = stores_.transactions()->getTransaction(found->transactionId);
    if (!row || !row.value()) return std::nullopt;
    return Content{row.value()->uriData, row.value()->dataJSON};
}

std::optional<QueuedChanges::Numbers> QueuedChanges::retry(const Numbers& numbers) const {
    auto& database = stores_.databaseAdapter();
    Numbers ready;
    bool isStored = database && database->transaction("retry changes", [&] {
        auto before = list();
        if (!before) return false;
        for (auto& change : *before) {
            bool isWanted =
                numbers.empty() || std::find(numbers.begin(), numbers.end(), change.number) != numbers.end();
            if (change.state != Change::State::failed || !isWanted) continue;
            auto row = stores_.transactions()->getTransaction(change.transactionId);
            if (!row || !row.value() || !retryOne(*row.value(), change)) return false;
        }
        auto after = list();
        if (!after) return false;
        for (auto& change : *before) {
            auto isSame = [&](auto& other) { return other.transactionId == change.transactionId; };
            auto now = std::find_if(after->begin(), after->end(), isSame);
            bool isReady = now != after->end() && now->state != Change::State::failed;
            if (change.state == Change::State::failed && isReady) ready.push_back(change.number);
        }
        return true;
    });
    return isStored ? std::optional(std::move(ready)) : std::nullopt;
}

/// A payload that changes gets a new key; a change that is sent as it was keeps its own.
bool QueuedChanges::retryOne(const Transaction& change, const Change& listed) const {
    auto rows = stores_.transactions();
    auto changes = stores_.changeRegister();
    bool isEdit = change.operationType == TransactionType::editRecord;
    auto payload = isEdit ? ChangePayload::of(change) : std::nullopt;
    auto reduced = payload;
    auto ofRecord = rows->getTransactions(change.recordID);
    if (!ofRecord) return false;
    if (reduced)
        for (auto& later : ofRecord->transactions) {
            bool isLaterEdit = later.operationType == TransactionType::editRecord &&
                               later.moduleName == change.moduleName && later.transactionTime > change.transactionTime;
            auto set = isLaterEdit ? ChangePayload::of(later) : std::nullopt;
            if (!set) continue;
            for (auto& entry : *set)
                if (entry.name != RecordConstants::FieldAPINames::Id) reduced->remove(entry.name);
        }
    if (reduced && reduced->size() <= 1 && reduced->size() < payload->size())
        return rows->removeTransaction(change.transactionID) &&
               changes->remove(ChangeQueue::older, {change.transactionID});
    if (reduced && reduced->size() < payload->size()) {
        auto shorter = change;
        shorter.dataJSON = ChangePayload::body(*reduced);
        if (!shorter.dataJSON || !rows->storeTransaction(shorter) || !changes->renewKey(listed.number)) return false;
    }
    if (!rows->makeReady({change.transactionID}) || !changes->forgetRefusal(listed.number)) return false;
    return change.operationType != TransactionType::addRecord || freeDependents(stores_, change.recordID);
}

}  // namespace tarvo
