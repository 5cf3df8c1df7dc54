#include "tarvobase/record_changes/QueuedChanges.h"

#include <algorithm>
#include <map>
#include <set>

#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/record_changes/internal/ChangePayload.h"
#include "tarvobase/record_changes/internal/ChangeTurns.h"
#include "tarvobase/record_changes/internal/DependentFailures.h"
#include "tarvobase/record_changes/internal/SupersededEdits.h"
#include "tarvobase/records/RecordUtil.h"

namespace tarvo {

namespace {

using Turn = ChangeTurns::Turn;

using WaitingFor = Change::WaitingFor;
using Entries = std::map<std::string, const ChangeEntry*>;  // by the id of the row

Change::State stateOf(const QueuedChange& row, Turn turn) {
    if (row.hasFailed()) return Change::State::failed;
    if (row.isSending()) return Change::State::sending;
    return turn == Turn::wait || turn == Turn::notSendable ? Change::State::waiting : Change::State::ready;
}

/// Names the changes that must go first: the adds of records that the request would name, or earlier changes of the
/// same record.
WaitingFor otherChanges(const QueuedChange& row, const std::vector<std::string>& waitsFor, const Entries& entries,
                        const std::set<std::string>& adds) {
    WaitingFor waitingFor{.reason = Change::Reason::earlierChange};
    for (auto& id : waitsFor) {
        if (auto entry = entries.find(id); entry != entries.end()) waitingFor.numbers.push_back(entry->second->number);
        if (adds.contains(id) && !row.temporaryIds.empty()) waitingFor.reason = Change::Reason::newRecord;
    }
    return waitingFor;
}

/// Returns what a change waits for that nothing in the queue holds up.
std::optional<WaitingFor> whatQueueWaitsFor(const ChangeQueueStatus& queue) {
    if (queue.state == ChangeQueueStatus::State::off) return WaitingFor{.reason = Change::Reason::queueOff};
    if (!queue.until) return std::nullopt;
    return WaitingFor{.reason = queue.isLockedOut ? Change::Reason::otherProcess : Change::Reason::server,
                      .until = queue.until};
}

}  // namespace

std::optional<std::vector<Change>> QueuedChanges::list(const ChangeQueueStatus& queue) const {
    auto changes = list();
    auto waitingFor = whatQueueWaitsFor(queue);
    if (!changes || !waitingFor) return changes;
    for (auto& change : *changes) {
        if (change.state != Change::State::ready) continue;
        change.state = Change::State::waiting;
        change.waitingFor = waitingFor;
    }
    return changes;
}

std::optional<std::vector<Change>> QueuedChanges::list() const {
    auto queued = stores_.transactions()->getTransactions();
    auto entries = stores_.changeRegister()->entries();
    if (!queued || !entries) return std::nullopt;
    Entries entryOf;
    for (auto& entry : *entries)
        if (entry.queue == ChangeQueue::older) entryOf[entry.transactionId] = &entry;
    std::vector<QueuedChange> rows(queued->transactions.begin(), queued->transactions.end());
    std::set<std::string> adds;
    for (auto& row : rows)
        if (row.transaction.operationType == TransactionType::addRecord) adds.insert(row.transaction.transactionID);
    ChangeTurns turns(rows);
    std::vector<Change> changes;
    for (auto& row : rows) {
        auto judgement = turns.judge(row);
        auto entry = entryOf.find(row.transaction.transactionID);
        auto change = Change::of(row.transaction, entry == entryOf.end() ? ChangeEntry() : *entry->second);
        change.state = stateOf(row, judgement.turn);
        if (judgement.turn == Turn::notSendable) change.waitingFor = WaitingFor{.reason = Change::Reason::notSendable};
        if (judgement.turn == Turn::wait) change.waitingFor = otherChanges(row, judgement.waitsFor, entryOf, adds);
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

bool QueuedChanges::retryOne(const Transaction& change, const Change& listed) const {
    auto rows = stores_.transactions();
    auto ofRecord = rows->getTransactions(change.recordID);
    if (!ofRecord) return false;
    bool isEdit = change.operationType == TransactionType::editRecord;
    if (isEdit && !SupersededEdits::leaveOut(stores_, change, ofRecord->transactions)) return false;
    if (!rows->makeReady({change.transactionID}) || !stores_.changeRegister()->forgetRefusal(listed.number))
        return false;
    return change.operationType != TransactionType::addRecord || freeDependents(stores_, change.recordID);
}

}  // namespace tarvo
