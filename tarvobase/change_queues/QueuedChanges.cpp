#include "tarvobase/change_queues/QueuedChanges.h"

#include <algorithm>
#include <map>
#include <set>

#include "platform/Text.h"
#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/record_changes/internal/ChangePayload.h"
#include "tarvobase/record_changes/internal/ChangeTurns.h"
#include "tarvobase/record_changes/internal/DependentFailures.h"
#include "tarvobase/record_changes/internal/SupersededEdits.h"
#include "tarvobase/records/RecordUtil.h"
#include "tarvobase/records/SharedActivities.h"
#include "tarvobase/transaction/TransactionWaiters.h"

namespace tarvo {

namespace {

using Turn = ChangeTurns::Turn;
using WaitingFor = Change::WaitingFor;
using Reason = Change::Reason;
using State = Change::State;

State stateOf(const QueuedChange& row, Turn turn) {
    if (row.hasFailed()) return State::failed;
    if (row.isSending()) return State::sending;
    return turn == Turn::wait || turn == Turn::notSendable ? State::waiting : State::ready;
}

State stateOf(const NTransaction& row, const ChangeEntry& entry, bool isWaiting) {
    if (row.status.which == NTransaction::Status::Case::syncing) return State::sending;
    // Without an answer the error is that of the last try; the next one takes it back.
    bool isUnanswered = entry.lastRefusal && entry.lastRefusal->isNoAnswer();
    if (row.errorResponse && !isUnanswered) return State::failed;
    return isWaiting || row.status.which == NTransaction::Status::Case::inactive ? State::waiting : State::ready;
}

/// Returns what a change waits for that nothing in its queue holds up.
std::optional<WaitingFor> whatQueueWaitsFor(const ChangeQueueStatus& queue) {
    if (queue.state == ChangeQueueStatus::State::off) return WaitingFor{.reason = Reason::queueOff};
    if (!queue.until) return std::nullopt;
    if (queue.isLockedOut) return WaitingFor{.reason = Reason::otherProcess, .until = queue.until};
    return WaitingFor{
        .reason = queue.isSignedOut ? Reason::noToken : Reason::server, .until = queue.until, .since = queue.since};
}

}  // namespace

/// The register, by the ids of rows.
struct QueuedChanges::Entries {
    explicit Entries(const std::vector<ChangeEntry>& all) {
        for (auto& entry : all) {
            of[entry.transactionId] = &entry;
            // What waits in the current queue names adds of the older one by their places.
            if (entry.transactionNumber) of.emplace(std::to_string(entry.transactionNumber), &entry);
        }
    }
    ChangeEntry find(const std::string& id) const {
        auto found = of.find(id);
        return found == of.end() ? ChangeEntry() : *found->second;
    }

    std::map<std::string, const ChangeEntry*> of;
};

QueuedChanges::Changes QueuedChanges::list(const ChangeQueueStatus& older, const ChangeQueueStatus& current) const {
    auto changes = list();
    if (!changes) return std::nullopt;
    for (auto& change : *changes) {
        auto waitingFor = stores_.scope.isCurrent()
                              ? whatQueueWaitsFor(change.queue == ChangeQueue::older ? older : current)
                              : WaitingFor{.reason = Reason::otherScope};
        if (change.state != State::ready || !waitingFor) continue;
        change.state = State::waiting;
        change.waitingFor = waitingFor;
    }
    return changes;
}

QueuedChanges::Changes QueuedChanges::list() const {
    auto entries = stores_.changeRegister()->entries();
    if (!entries) return std::nullopt;
    Entries byId(*entries);
    std::vector<Change> changes;
    if (!addOlder(byId, changes) || !addCurrent(byId, changes)) return std::nullopt;
    std::stable_sort(changes.begin(), changes.end(), [](auto& a, auto& b) { return a.number < b.number; });
    return changes;
}

bool QueuedChanges::addOlder(const Entries& entries, std::vector<Change>& changes) const {
    auto queued = stores_.transactions()->getTransactions();
    if (!queued) return false;
    FreeText freeText(stores_);
    std::vector<QueuedChange> rows;
    for (auto& row : queued->transactions) rows.emplace_back(std::move(row), freeText);
    auto current = ChangeTurns::currentQueueFor(stores_, rows);
    if (!current) return false;
    std::set<std::string> adds;
    for (auto& each : current->creations) adds.insert(each.second.transactionId);
    for (auto& row : rows)
        if (row.transaction.operationType == TransactionType::addRecord) adds.insert(row.transaction.transactionID);
    ChangeTurns turns(rows, *current);
    for (auto& row : rows) {
        auto judgement = turns.judge(row);
        auto change = Change::of(row.transaction, entries.find(row.transaction.transactionID));
        change.state = stateOf(row, judgement.turn);
        if (judgement.turn == Turn::notSendable) change.waitingFor = WaitingFor{.reason = Reason::notSendable};
        if (judgement.turn == Turn::wait) {
            change.waitingFor = WaitingFor{.reason = Reason::earlierChange};
            for (auto& id : judgement.waitsFor) {
                if (auto number = entries.find(id).number) change.waitingFor->numbers.push_back(number);
                if (adds.contains(id) && !row.temporaryIds.empty()) change.waitingFor->reason = Reason::newRecord;
            }
        }
        changes.push_back(std::move(change));
    }
    return true;
}

bool QueuedChanges::addCurrent(const Entries& entries, std::vector<Change>& changes) const {
    auto queued = stores_.currentTransactions()->getTransactions();
    auto dependencies = stores_.transactionDependencies()->getTransactionDependencies();
    auto pairs = stores_.recordOrder().pairs();
    if (!queued || !dependencies || !pairs) return false;
    std::multimap<std::int64_t, std::string> earlier;
    for (auto& pair : *pairs)
        if (pair.isOlderFirst) earlier.emplace(pair.currentId, pair.olderId);
    std::multimap<std::int64_t, TransactionDependency> waitsFor;
    for (auto& dependency : *dependencies) waitsFor.emplace(dependency.transactionId, dependency);
    // All organisations share the table.
    std::vector<std::string> ids;
    for (auto& row : queued->transactions) ids.push_back(std::to_string(row.id));
    auto all = stores_.changeRegister()->entriesOf(ChangeQueue::current, ids);
    if (!all) return false;
    Entries own(*all);
    for (auto& row : queued->transactions) {
        auto entry = own.find(std::to_string(row.id));
        auto [first, last] = waitsFor.equal_range(row.id);
        auto change = Change::of(row, entry);
        auto [older, lastOlder] = earlier.equal_range(row.id);
        change.state = stateOf(row, entry, first != last || older != lastOlder);
        if (change.state == State::ready || change.state == State::waiting) change.error.reset();
        if (change.state == State::ready && entry.number && entry.organisation != stores_.scope.organisation) {
            change.state = State::waiting;
            change.waitingFor = WaitingFor{.reason = Reason::otherScope};
            changes.push_back(std::move(change));
            continue;
        }
        if (change.state == State::waiting) change.waitingFor = WaitingFor{.reason = Reason::heldBack};
        for (; change.state == State::waiting && first != last; ++first) {
            bool isLookup = first->second.kind == TransactionDependency::Kind::lookupRecord;
            change.waitingFor->reason = isLookup ? Reason::newRecord : Reason::earlierChange;
            if (auto number = entries.find(std::to_string(first->second.dependentTransaction)).number)
                change.waitingFor->numbers.push_back(number);
        }
        for (; change.state == State::waiting && older != lastOlder; ++older) {
            if (change.waitingFor->reason == Reason::heldBack) change.waitingFor->reason = Reason::earlierChange;
            change.waitingFor->numbers.push_back(entries.find(older->second).number);
        }
        changes.push_back(std::move(change));
    }
    return true;
}

std::optional<QueuedChanges::Content> QueuedChanges::content(std::int64_t number) const {
    auto entries = stores_.changeRegister()->entriesWithNumbers({number});
    if (!entries || entries->empty()) return std::nullopt;
    auto& entry = entries->front();
    if (entry.queue == ChangeQueue::current) {
        auto id = text::toInteger(entry.transactionId).value_or(0);
        auto payloads = stores_.currentTransactions()->getPayload({id}, {});
        if (!payloads || payloads->empty()) return std::nullopt;
        return Content{platform::Data("{}"), platform::Data(payloads->begin()->second)};
    }
    auto row = stores_.transactions()->getTransaction(entry.transactionId);
    if (!row || !row.value()) return std::nullopt;
    return Content{row.value()->uriData, row.value()->dataJSON};
}

std::optional<std::vector<QueuedChanges::Outcome>> QueuedChanges::outcomes(const Numbers& numbers) const {
    auto ends = endsOf(numbers);
    if (!ends) return std::nullopt;
    auto aliases = stores_.recordIdAliases();
    std::vector<Outcome> outcomes;
    for (auto number : numbers) {
        auto isIts = [&](auto& end) { return end.number == number; };
        auto end = std::find_if(ends->begin(), ends->end(), isIts);
        outcomes.push_back({.number = number});
        if (end == ends->end()) continue;
        outcomes.back().outcome = end->outcome;
        if (!end->recordId.empty())
            outcomes.back().recordId = SharedActivities::currentId(*aliases, end->moduleName, end->recordId);
    }
    return outcomes;
}

/// Returns what is known of changes that have ended, and of those that are queued.
std::optional<std::vector<ChangeEnd>> QueuedChanges::endsOf(const Numbers& numbers) const {
    auto ends = stores_.changeRegister()->endsOf(numbers);
    auto entries = stores_.changeRegister()->entriesWithNumbers(numbers);
    if (!ends || !entries) return std::nullopt;
    for (auto& entry : *entries) {
        ChangeEnd queued{.number = entry.number, .outcome = ChangeOutcome::queued};
        if (entry.queue == ChangeQueue::older) {
            auto row = stores_.transactions()->getTransaction(entry.transactionId);
            if (row && row.value())
                queued.moduleName = row.value()->moduleName, queued.recordId = row.value()->recordID;
        } else {
            auto rows = stores_.currentTransactions()->getTransactionsWithIds(
                {text::toInteger(entry.transactionId).value_or(0)});
            if (rows && !rows->empty())
                queued.moduleName = rows->front().module.rawValue(), queued.recordId = rows->front().recordId;
        }
        ends->push_back(std::move(queued));
    }
    return ends;
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
            bool isOlder = change.queue == ChangeQueue::older;
            if (!(isOlder ? retryOlder(change) : retryCurrent(change))) return false;
        }
        auto after = list();
        if (!after) return false;
        for (auto& change : *before) {
            auto isSame = [&](auto& other) { return other.number == change.number; };
            auto now = std::find_if(after->begin(), after->end(), isSame);
            bool isReady = now != after->end() && now->state != Change::State::failed;
            if (change.state == Change::State::failed && isReady) ready.push_back(change.number);
        }
        return true;
    });
    return isStored ? std::optional(std::move(ready)) : std::nullopt;
}

bool QueuedChanges::retryOlder(const Change& listed) const {
    auto rows = stores_.transactions();
    if (!SupersededEdits::leaveOutBetweenQueues(stores_, listed.recordId)) return false;
    auto row = rows->getTransaction(listed.transactionId);
    if (!row) return false;
    // Nothing was left of an edit that an add before it has freed.
    if (!row.value()) return true;
    auto& change = *row.value();
    auto ofRecord = rows->getTransactions(change.recordID);
    if (!ofRecord) return false;
    bool isEdit = change.operationType == TransactionType::editRecord;
    if (isEdit && !SupersededEdits::leaveOut(stores_, change, ofRecord->transactions)) return false;
    if (!rows->makeReady({change.transactionID}) || !stores_.changeRegister()->forgetRefusal(listed.number))
        return false;
    if (change.operationType != TransactionType::addRecord) return true;
    auto entries = stores_.changeRegister()->entriesOf(ChangeQueue::older, {change.transactionID});
    auto place = entries && !entries->empty() ? entries->front().transactionNumber : 0;
    return freeDependents(stores_, change.recordID, place).has_value();
}

/// The change keeps its key: its payload is what was sent.
bool QueuedChanges::retryCurrent(const Change& listed) const {
    auto rows = stores_.currentTransactions();
    auto id = text::toInteger(listed.transactionId).value_or(0);
    if (!SupersededEdits::leaveOutBetweenQueues(stores_, listed.recordId)) return false;
    auto stored = rows->getTransactionsWithIds({id});
    if (!stored) return false;
    // Nothing was left of it.
    if (stored->empty()) return true;
    return rows->clearError({id}) && stores_.changeRegister()->forgetRefusal(listed.number) &&
           rows->setSyncAttempt(0, NTransaction::Status::active(), id) && TransactionWaiters(stores_).recover(id) &&
           (!createsRecord(stored->front().kind) || freeDependents(stores_, listed.recordId, 0));
}

}  // namespace tarvo
