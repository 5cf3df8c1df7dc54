#include "tarvobase/record_changes/internal/OlderChangeQueue.h"

#include <algorithm>
#include <set>

#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/transaction/ChangeNotices.h"
#include "tarvobase/transaction/TransactionWaiters.h"

namespace tarvo {

OlderChangeQueue::OlderChangeQueue(const Stores& stores, std::shared_ptr<ChangeSender> sender,
                                   ChangeSettlement settlement)
    : stores_(stores), sender_(std::move(sender)), settlement_(std::move(settlement)) {}

/// Rows that cannot be read become failures, which hosts can list. Rows without parameters stay as they are: nothing
/// would come of sending them again. Rows that an older program has stored get their number.
bool OlderChangeQueue::reclaim() {
    auto queued = stores_.databaseAdapter() ? stores_.transactions()->getTransactions() : std::nullopt;
    auto entries = queued ? stores_.changeRegister()->entries() : std::nullopt;
    if (!queued || !entries) return false;
    std::set<std::string> entered;
    for (auto& entry : *entries)
        if (entry.queue == ChangeQueue::older) entered.insert(entry.transactionId);
    std::vector<std::string> abandoned, unnumbered;
    for (auto& row : queued->transactions) {
        if (!entered.contains(row.transactionID)) unnumbered.push_back(row.transactionID);
        QueuedChange change(row);
        bool isSendable = ChangeTurns::isSendable(row.operationType) && change.hasParameters;
        if (change.isSending() && isSendable && !claims_.contains(row.transactionID))
            abandoned.push_back(row.transactionID);
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
    for (auto& row : queued->transactions) queue_.emplace_back(std::move(row));
    auto created = ChangeTurns::creationsFor(stores_, queue_);
    if (!created) return false;
    created_ = *std::move(created);
    isKnown_ = true;
    return true;
}

DrainedChanges::Next OlderChangeQueue::claimNext() {
    for (;;) {
        if (!isKnown_ && !read()) return {.hasFailed = true};
        ChangeTurns turns(queue_, created_);
        bool isStale = false;
        for (auto& change : queue_) {
            auto step = take(change, turns.judge(change));
            if (step == Step::claimed) return {.transactionID = change.transaction.transactionID};
            if (step == Step::failed) return {.hasFailed = true};
            isStale = step == Step::stale;
            if (isStale) break;
        }
        if (!isStale) return {};
        isKnown_ = false;
    }
}

OlderChangeQueue::Step OlderChangeQueue::take(QueuedChange& change, const ChangeTurns::Judgement& judgement) {
    using Turn = ChangeTurns::Turn;
    switch (judgement.turn) {
        case Turn::send:
            return claim(change);
        case Turn::fail:
            return failForDependency(change);
        case Turn::drop:
            return drop(change);
        default:
            return Step::next;
    }
}

/// Marks a row as being sent, unless it has been changed or dropped since it was read.
OlderChangeQueue::Step OlderChangeQueue::claim(QueuedChange& change) {
    auto& id = change.transaction.transactionID;
    auto step = Step::failed;
    std::optional<Claim> claimed;
    bool isStored = stores_.databaseAdapter()->transaction("claim a change", [&] {
        auto found = stores_.transactions()->getTransaction(id);
        if (!found || !found.value() || *found.value() != change.transaction) {
            step = Step::stale;
            return found || found.error() != ParserError::noData();
        }
        auto entry = stores_.changeRegister()->enter(ChangeQueue::older, id);
        if (!entry || !stores_.changeRegister()->noteSend(entry->number)) return false;
        ++entry->sends;
        claimed = Claim{*found.value(), *entry};
        return stores_.transactions()->updateTransaciton(id, std::nullopt, std::nullopt,
                                                         std::string(Transaction::State::inProgress));
    });
    if (!isStored) return Step::failed;
    if (step == Step::stale) return step;
    change.transaction.extras = std::string(Transaction::State::inProgress);
    claims_.insert_or_assign(id, *std::move(claimed));
    return Step::claimed;
}

OlderChangeQueue::Step OlderChangeQueue::failForDependency(const QueuedChange& change) {
    auto& id = change.transaction.transactionID;
    auto refusal = ErrorResponse::dependingTransactionFailed();
    std::optional<ChangeEntry> entry;
    bool isStored = stores_.databaseAdapter()->transaction("fail a change", [&] {
        entry = stores_.changeRegister()->enter(ChangeQueue::older, id);
        auto number = entry ? entry->transactionNumber : 0;
        if (number && !TransactionWaiters(stores_).fail(number, refusal)) return false;
        return entry && stores_.changeRegister()->noteRefusal(entry->number, refusal, false) &&
               stores_.transactions()->updateTransaciton(id, std::nullopt, std::nullopt,
                                                         std::string(Transaction::State::error));
    });
    if (!isStored) return Step::failed;
    changeNotices::refused(Change::of(change.transaction, *entry), refusal);
    return Step::stale;
}

/// The server never had the record, so that it agrees.
/// Takes the delete of a record that the server never had out of the queue. An add of it that was refused while the
/// delete waited goes as well: it must not come back when failed changes are tried again. The delete stays beside an
/// add that may have been applied: trying that again finds the id.
OlderChangeQueue::Step OlderChangeQueue::drop(const QueuedChange& change) {
    auto& id = change.transaction.transactionID;
    std::vector<std::string> dropped{id};
    for (auto& other : queue_)
        if (other.transaction.operationType == TransactionType::addRecord &&
            other.transaction.recordID == change.transaction.recordID)
            dropped.push_back(other.transaction.transactionID);
    auto entries = stores_.changeRegister()->entriesOf(ChangeQueue::older, dropped);
    if (!entries) return Step::failed;
    if (std::any_of(entries->begin(), entries->end(), [](auto& entry) { return entry.mayBeApplied; }))
        return failForDependency(change);
    std::optional<ChangeEntry> entry;
    bool isStored = stores_.databaseAdapter()->transaction("drop a delete", [&] {
        entry = stores_.changeRegister()->enter(ChangeQueue::older, id);
        return entry && stores_.transactions()->removeTransactionsWithIds(dropped) &&
               stores_.changeRegister()->remove(ChangeQueue::older, dropped);
    });
    if (!isStored) return Step::failed;
    changeNotices::accepted(Change::of(change.transaction, *entry), std::nullopt);
    return Step::stale;
}

void OlderChangeQueue::send(const std::string& transactionID, std::function<void(Settle)> answered) {
    auto& claim = claims_.at(transactionID);
    sender_->send(
        claim.change, claim.entry.key,
        [weak = platform::weakSelf(this), transactionID, answered = std::move(answered)](ChangeAnswer answer) {
            answered([weak, transactionID, answer = std::move(answer)] {
                auto self = weak.lock();
                return self ? self->settle(transactionID, answer) : Outcome::noAnswer;
            });
        });
}

DrainedChanges::Outcome OlderChangeQueue::settle(const std::string& transactionID, const ChangeAnswer& answer) {
    auto claim = claims_.extract(transactionID);
    bool isStored = settlement_.settle(claim.mapped().change, claim.mapped().entry, answer);
    auto& change = claim.mapped().change;
    bool isPlainEdit = isStored && change.operationType == TransactionType::editRecord &&
                       answer.outcome == ChangeAnswer::Outcome::accepted;
    // The answer to an edit changes no other row. Everything else is read again.
    if (isPlainEdit)
        std::erase_if(queue_, [&](auto& row) { return row.transaction.transactionID == transactionID; });
    else
        isKnown_ = false;
    return isStored ? Outcome::settled : Outcome::noAnswer;
}

}  // namespace tarvo
