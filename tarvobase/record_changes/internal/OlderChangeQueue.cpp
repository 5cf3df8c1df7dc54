#include "tarvobase/record_changes/internal/OlderChangeQueue.h"

#include <algorithm>
#include <set>
#include <tuple>

#include "platform/Text.h"
#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/record_changes/internal/EndedChanges.h"
#include "tarvobase/record_changes/internal/RecordSides.h"
#include "tarvobase/transaction/ChangeNotices.h"
#include "tarvobase/transaction/TransactionWaiters.h"

namespace tarvo {

OlderChangeQueue::OlderChangeQueue(const Stores& stores, std::shared_ptr<ChangeSender> sender,
                                   ChangeSettlement settlement)
    : stores_(stores), sender_(std::move(sender)), settlement_(std::move(settlement)) {}

/// Rows that cannot be read become failures, which hosts can list. Rows without parameters stay as they are: nothing
/// would come of sending them again. Rows that an older program has stored get their number.
bool OlderChangeQueue::reclaim() {
    if (!stores_.databaseAdapter()) return false;
    if (!isPrepared_) isPrepared_ = stores_.transactions()->prepare();
    if (!isPrepared_) return false;
    auto queued = stores_.transactions()->getTransactions();
    if (!queued) return false;
    // Every result of the current queue asks for a look here.
    if (queued->transactions.empty() && queued->unreadable.empty()) {
        isKnown_ = false;
        return true;
    }
    auto entries = stores_.changeRegister()->entries();
    if (!entries) return false;
    std::set<std::string> entered;
    for (auto& entry : *entries)
        if (entry.queue == ChangeQueue::older) entered.insert(entry.transactionId);
    std::vector<std::string> abandoned, unnumbered;
    for (auto& row : queued->transactions) {
        if (!entered.contains(row.transactionID)) unnumbered.push_back(row.transactionID);
        QueuedChange change(row);
        bool isSendable = ChangeTurns::isSendable(row.operationType) && change.hasParameters;
        if (change.isSending() && isSendable && !isClaimed(row.transactionID)) abandoned.push_back(row.transactionID);
    }
    std::vector<std::int64_t> unreadable;
    for (auto& row : queued->unreadable)
        if (row.extras != Transaction::State::error) unreadable.push_back(row.row);
    isKnown_ = false;
    if (abandoned.empty() && unreadable.empty() && unnumbered.empty()) return true;
    return stores_.databaseAdapter()->transaction("reclaim changes", [&] {
        for (auto& id : unnumbered)
            if (!stores_.changeRegister()->enter(ChangeQueue::older, id)) return false;
        return stores_.transactions()->makeReady(abandoned) && stores_.transactions()->failUnreadable(unreadable);
    });
}

bool OlderChangeQueue::read() {
    auto queued = stores_.transactions()->getTransactions();
    if (!queued) return false;
    queue_.clear();
    FreeText freeText(stores_);
    for (auto& row : queued->transactions) queue_.emplace_back(std::move(row), freeText);
    auto current = ChangeTurns::currentQueueFor(stores_, queue_);
    if (!current) return false;
    current_ = *std::move(current);
    isKnown_ = true;
    return true;
}

DrainedChanges::Claims OlderChangeQueue::claim(std::size_t most) {
    for (;;) {
        if (!isKnown_ && !read()) return {.hasFailed = true};
        std::vector<QueuedChange*> found;
        auto step = findSendable(most, found);
        if (step == Step::done && !found.empty()) step = claim(found);
        if (step == Step::failed) return {.hasFailed = true};
        isKnown_ = step != Step::stale;
        if (!isKnown_) continue;
        Claims claims;
        for (auto change : found) claims.transactionIDs.push_back(change->transaction.transactionID);
        return claims;
    }
}

OlderChangeQueue::Step OlderChangeQueue::findSendable(std::size_t most, std::vector<QueuedChange*>& found) {
    using Turn = ChangeTurns::Turn;
    ChangeTurns turns(queue_, current_);
    for (auto& change : queue_) {
        if (found.size() == most) break;
        auto turn = turns.judge(change).turn;
        if (turn == Turn::send) found.push_back(&change);
        if (turn == Turn::fail) return failForDependency(change);
        if (turn == Turn::drop) return drop(change);
    }
    return Step::done;
}

/// Marks rows as being sent, unless one of them has been changed or dropped since it was read.
OlderChangeQueue::Step OlderChangeQueue::claim(const std::vector<QueuedChange*>& changes) {
    std::vector<std::string> ids;
    for (auto change : changes) ids.push_back(change->transaction.transactionID);
    auto rows = stores_.transactions();
    auto entered = stores_.changeRegister();
    bool isStale = false;
    std::vector<ChangeEntry> entries;
    bool isStored = stores_.databaseAdapter()->transaction("claim changes", [&] {
        auto found = rows->getTransactionsWithIds(ids);
        if (!found) return false;
        isStale = !std::equal(found->transactions.begin(), found->transactions.end(), changes.begin(), changes.end(),
                              [](auto& row, auto change) { return row == change->transaction; });
        if (isStale) return true;
        auto present = entered->entriesOf(ChangeQueue::older, ids);
        if (!present) return false;
        std::vector<std::int64_t> numbers;
        for (auto& id : ids) {
            auto isIts = [&](auto& entry) { return entry.transactionId == id; };
            auto its = std::find_if(present->begin(), present->end(), isIts);
            auto entry = its == present->end() ? entered->enter(ChangeQueue::older, id) : std::optional(*its);
            if (!entry) return false;
            numbers.push_back(entry->number);
            ++entry->sends;
            entries.push_back(*std::move(entry));
        }
        return entered->noteSends(numbers) && rows->markSending(ids);
    });
    if (!isStored) return Step::failed;
    if (isStale) return Step::stale;
    platform::MutexLock lock(mutex_);
    for (std::size_t i = 0; i < changes.size(); ++i) {
        claims_.insert_or_assign(ids[i], Claim{changes[i]->transaction, std::move(entries[i])});
        changes[i]->transaction.extras = std::string(Transaction::State::inProgress);
    }
    return Step::done;
}

/// Returns whether the rows are still those that were judged. A verdict over several rows holds only then: the user may
/// have tried the add again or deleted the record since.
bool OlderChangeQueue::isAsRead() const {
    auto queued = stores_.transactions()->getTransactions();
    auto current = ChangeTurns::currentQueueFor(stores_, queue_);
    auto isSame = [](auto& row, auto& judged) { return row == judged.transaction; };
    return queued && current == current_ &&
           std::equal(queued->transactions.begin(), queued->transactions.end(), queue_.begin(), queue_.end(), isSame);
}

OlderChangeQueue::Step OlderChangeQueue::failForDependency(const QueuedChange& change) {
    auto& id = change.transaction.transactionID;
    auto refusal = ErrorResponse::dependingTransactionFailed();
    std::optional<ChangeEntry> entry;
    bool isStored = stores_.databaseAdapter()->transaction("fail a change", [&] {
        if (!isAsRead()) return true;
        entry = stores_.changeRegister()->enter(ChangeQueue::older, id);
        auto number = entry ? entry->transactionNumber : 0;
        if (number && !TransactionWaiters(stores_).fail(number, refusal)) return false;
        return entry && stores_.changeRegister()->noteRefusal(entry->number, refusal, false) &&
               stores_.transactions()->updateTransaciton(id, std::nullopt, std::nullopt,
                                                         std::string(Transaction::State::error));
    });
    if (!isStored) return Step::failed;
    if (entry) changeNotices::refused(Change::of(change.transaction, *entry), refusal);
    settlement_.wakeCurrentQueue();
    return Step::stale;
}

/// Takes the delete of a record that the server never had out of the queue. An add of it in either queue that was
/// refused while the delete waited goes as well: it must not come back when failed changes are tried again. The delete
/// stays beside an add that may have been applied: trying that again finds the id.
OlderChangeQueue::Step OlderChangeQueue::drop(const QueuedChange& change) {
    auto& id = change.transaction.transactionID;
    std::vector<Transaction> adds;
    std::vector<std::string> dropped{id};
    for (auto& other : queue_) {
        if (other.transaction.operationType != TransactionType::addRecord ||
            other.transaction.recordID != change.transaction.recordID)
            continue;
        adds.push_back(other.transaction);
        dropped.push_back(other.transaction.transactionID);
    }
    std::vector<std::string> creating;
    if (auto found = current_.creations.find(change.transaction.recordID); found != current_.creations.end())
        creating.push_back(found->second.transactionId);
    auto entries = stores_.changeRegister()->entriesOf(ChangeQueue::older, dropped);
    auto creations = stores_.changeRegister()->entriesOf(ChangeQueue::current, creating);
    if (!entries || !creations) return Step::failed;
    if (std::any_of(entries->begin(), entries->end(), [](auto& entry) { return entry.mayBeApplied; }) ||
        std::any_of(creations->begin(), creations->end(), [](auto& entry) { return entry.mayHaveArrived(); }))
        return failForDependency(change);
    std::optional<ChangeEntry> entry;
    bool isStored = stores_.databaseAdapter()->transaction("drop a delete", [&] {
        if (!isAsRead()) return true;
        entry = stores_.changeRegister()->enter(ChangeQueue::older, id);
        auto& recordId = change.transaction.recordID;
        return entry && RecordSides::remove(stores_, recordId) &&
               endOlderChanges(stores_, {change.transaction}, ChangeOutcome::accepted) &&
               endOlderChanges(stores_, adds, ChangeOutcome::cancelled) && removeCreating(creating, change.transaction);
    });
    if (!isStored) return Step::failed;
    if (entry) changeNotices::accepted(Change::of(change.transaction, *entry), std::nullopt);
    return Step::stale;
}

/// What waits for a transaction that goes is free, and fails by itself: it names a record that nobody creates.
bool OlderChangeQueue::removeCreating(const std::vector<std::string>& transactionIds,
                                      const Transaction& deletion) const {
    std::vector<std::int64_t> ids;
    std::vector<EndedChange> ended;
    for (auto& id : transactionIds) {
        ids.push_back(text::toInteger(id).value_or(0));
        ended.push_back({id, deletion.moduleName, deletion.recordID});
    }
    return ids.empty() || (stores_.currentTransactions()->deleteTransactionWithIds(ids) &&
                           stores_.changeRegister()->end(ChangeQueue::current, ended, ChangeOutcome::cancelled));
}

void OlderChangeQueue::send(const std::string& transactionID, ChangeCompletion answered) {
    std::optional<Claim> claim;
    {
        platform::MutexLock lock(mutex_);
        claim = claims_.at(transactionID);
    }
    sender_->send(claim->change, claim->entry.key, std::move(answered));
}

/// An answer that cannot be stored must not cost the others, so that after a failure each is stored alone.
DrainedChanges::Settlement OlderChangeQueue::settle(std::vector<Answer> answers) {
    std::vector<AnsweredChange> changes;
    for (auto& answer : answers)
        if (auto claim = takeClaim(answer.transactionID))
            changes.push_back({std::move(claim->change), std::move(claim->entry), std::move(answer.answer)});
    bool areStored = settlement_.settle(changes);
    Settlement settlement;
    for (auto& change : changes) {
        bool isStored = areStored || (changes.size() > 1 && settlement_.settle({change}));
        bool isSettled = isStored && change.answer.outcome != ChangeAnswer::Outcome::noAnswer;
        (isSettled ? settlement.hasSettled : settlement.hasLeft) = true;
        bool isPlainEdit = isSettled && change.sent.operationType == TransactionType::editRecord &&
                           change.answer.outcome == ChangeAnswer::Outcome::accepted;
        // The answer to an edit changes no other row. Everything else is read again.
        if (isPlainEdit)
            std::erase_if(queue_,
                          [&](auto& row) { return row.transaction.transactionID == change.sent.transactionID; });
        else
            isKnown_ = false;
    }
    return settlement;
}

/// Rows that the database does not let go are ready again when the drain begins the next time.
void OlderChangeQueue::giveBack(const std::vector<std::string>& transactionIDs) {
    std::vector<std::int64_t> numbers;
    for (auto& id : transactionIDs)
        if (auto claim = takeClaim(id)) numbers.push_back(claim->entry.number);
    isKnown_ = false;
    std::ignore = stores_.databaseAdapter()->transaction("give changes back", [&] {
        return stores_.transactions()->makeReady(transactionIDs) && stores_.changeRegister()->takeBackSends(numbers);
    });
}

bool OlderChangeQueue::isClaimed(const std::string& transactionID) const {
    platform::MutexLock lock(mutex_);
    return claims_.contains(transactionID);
}

std::optional<OlderChangeQueue::Claim> OlderChangeQueue::takeClaim(const std::string& transactionID) {
    platform::MutexLock lock(mutex_);
    auto claim = claims_.extract(transactionID);
    return claim ? std::optional(std::move(claim.mapped())) : std::nullopt;
}

}  // namespace tarvo
