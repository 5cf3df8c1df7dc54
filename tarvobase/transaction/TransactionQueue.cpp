#include "tarvobase/transaction/TransactionQueue.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/database_layer/TransactionEnd.h"
#include "tarvobase/transaction/ChangeNotices.h"

namespace tarvo {

namespace {

using Status = NTransaction::Status;

/// How much longer than asked a transaction is held back.
constexpr std::chrono::seconds extraDelay{10};

}  // namespace

TransactionQueue::TransactionQueue(const Stores& stores, std::shared_ptr<UserDefaultsProtocol> userDefaults)
    : stores_(stores),
      txnPersistence_(stores.currentTransactions()),
      txnDependencyPersistence_(stores.transactionDependencies()),
      transactionIds_(stores),
      waiters_(stores),
      recordIds_(stores, std::move(userDefaults)) {}

TransactionQueue::~TransactionQueue() { inactiveTransactionTracker_.removeAll(); }

std::vector<std::string> TransactionQueue::textsOf(const Ids& ids) {
    std::vector<std::string> texts;
    for (auto id : ids) texts.push_back(std::to_string(id));
    return texts;
}

bool TransactionQueue::inOneCommit(std::string_view name, platform::FunctionRef<bool()> steps) {
    auto& database = stores_.databaseAdapter();
    return database && database->transaction(name, steps);
}

std::string TransactionQueue::getNewRecordId() {
    auto id = recordIds_.getNewRecordId();
    while (isRecordIdTaken && isRecordIdTaken(id)) id = recordIds_.getNewRecordId();
    return id;
}

// Adding.

bool TransactionQueue::addTransactions(const std::vector<NTransaction>& transactions,
                                       const Dependencies& dependencies) {
    return inOneCommit("add transactions", [&] {
        for (auto& transaction : transactions)
            if (!activate(inactiveTransactionTracker_.idsOf(transaction.recordId))) return false;
        if (!txnPersistence_->storeTransactions(transactions, dependencies)) return false;
        for (auto& transaction : transactions) {
            auto entry = stores_.changeRegister()->enter(ChangeQueue::current, std::to_string(transaction.id));
            if (!entry) return false;
            afterCommit([this, transaction, change = Change::of(transaction, *entry)] {
                hold(transaction);
                changeNotices::saved(change);
            });
        }
        afterCommit([this] { wake(); });
        return true;
    });
}

void TransactionQueue::hold(const NTransaction& transaction) {
    if (transaction.status.which != Status::Case::inactive) return;
    auto delay = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::duration<double>(std::max(0.0, transaction.status.delay)) + extraDelay);
    auto timer = timerQueue_->asyncAfter(delay, [weak = platform::weakSelf(this), id = transaction.id] {
        if (auto self = weak.lock()) self->activateTransactionWithId(id);
    });
    inactiveTransactionTracker_.add({transaction.id, transaction.recordId, transaction.kind, timer});
}

bool TransactionQueue::addMergedTransaction(const NTransaction& transaction, const Dependencies& dependencies,
                                            const Ids& mergedTransactions, Attempts attempts) {
    auto others = mergedTransactions;
    std::erase(others, transaction.id);
    auto folded = others;
    folded.push_back(transaction.id);
    return inOneCommit("merge transactions", [&] {
        if (!canBeMerged(folded, transaction)) return false;
        auto left = dependencies;
        std::erase_if(left, [&](auto& each) {
            return std::find(folded.begin(), folded.end(), each.dependentTransaction) != folded.end();
        });
        auto former = txnPersistence_->getTransactionsWithIds({transaction.id});
        auto merged = txnPersistence_->getTransactionsWithIds(others);
        if (!former || !merged || !txnPersistence_->addMergedTransaction(transaction, left, mergedTransactions))
            return false;
        if (!settleEdits(transaction, *former) || !settleEdits(transaction, *merged) ||
            !keepNumberOfAdd(transaction, *merged))
            return false;
        bool isSamePayload = !former->empty() && former->front().payload == transaction.payload;
        auto entry = stores_.changeRegister()->enter(ChangeQueue::current, std::to_string(transaction.id));
        if (!entry || !endInRegister(*merged, ChangeOutcome::merged)) return false;
        if (!isSamePayload && !stores_.changeRegister()->renewKey(entry->number)) return false;
        for (auto id : others) afterCommit([this, id] { inactiveTransactionTracker_.removeTransactionInfo(id); });
        afterCommit([this] { wake(); });
        return reset(transaction.id, attempts == Attempts::keep ? transaction.syncAttempt : 0);
    });
}

/// An add goes before all other changes of its record, also before those that were made between it and the edit.
bool TransactionQueue::settleEdits(const NTransaction& survivor, const std::vector<NTransaction>& folded) {
    if (!editSettled || !createsRecord(survivor.kind)) return true;
    return std::all_of(folded.begin(), folded.end(), [&](auto& each) {
        if (depndencyType(each.kind) != RecordDependency::Kind::edit) return true;
        auto entries = stores_.changeRegister()->entriesOf(ChangeQueue::current, textsOf({each.id}));
        return entries && (entries->empty() || editSettled(each, entries->front().number));
    });
}

/// An edit that is merged with the add of its record is the add from then on, and has its number: who takes back the
/// number of the edit must not lose the record. The survivor may be another row of the queue than the add.
bool TransactionQueue::keepNumberOfAdd(const NTransaction& survivor, const std::vector<NTransaction>& merged) {
    auto add = std::find_if(merged.begin(), merged.end(), [](auto& each) { return createsRecord(each.kind); });
    if (add == merged.end() || !createsRecord(survivor.kind)) return true;
    return endInRegister({survivor}, ChangeOutcome::merged) &&
           stores_.changeRegister()->passOn(ChangeQueue::current, std::to_string(add->id), std::to_string(survivor.id));
}

/// A transaction that is on its way, or whose fate at the server is not known, is only ever repeated as it is: as a
/// part of another one the server would take it for a new change.
bool TransactionQueue::canBeMerged(const Ids& ids, const NTransaction& survivor) {
    auto stored = txnPersistence_->getTransactionsWithIds(ids);
    auto entries = stores_.changeRegister()->entriesOf(ChangeQueue::current, textsOf(ids));
    if (!stored || !entries) return false;
    bool isAlone = ids.size() == 1 && stored->size() == 1 && stored->front().payload == survivor.payload;
    bool isSending = std::any_of(stored->begin(), stored->end(), [&](auto& each) {
        return each.status.which == Status::Case::syncing || isBeingSent(each.id);
    });
    bool isUnknown = std::any_of(entries->begin(), entries->end(), [](auto& entry) { return entry.mayHaveArrived(); });
    return !isSending && (isAlone || !isUnknown);
}

// Activation and deletion.

bool TransactionQueue::activate(const Ids& ids) {
    auto stored = ids.empty() ? std::vector<NTransaction>() : txnPersistence_->getTransactionsWithIds(ids);
    if (!stored) return false;
    Ids inactive;
    for (auto& transaction : *stored)
        if (transaction.status.which == Status::Case::inactive) inactive.push_back(transaction.id);
    return txnPersistence_->setStatus(Status::active(), inactive);
}

/// Only what is still held back becomes active: by now it may be on its way, and would be sent twice.
bool TransactionQueue::activateTransactionWithId(std::int64_t id) {
    inactiveTransactionTracker_.removeTransactionInfo(id);
    bool isStored = inOneCommit("activate a transaction", [&] { return activate({id}); });
    if (isStored) wake();
    return isStored;
}

bool TransactionQueue::activateAllInactiveTransactions() {
    inactiveTransactionTracker_.removeAll();
    bool isStored = txnPersistence_->replaceStatus({Status::Case::inactive}, Status::active());
    if (isStored) wake();
    return isStored;
}

/// A row that cannot be read goes without a word: nobody was notified that it is there.
bool TransactionQueue::deleteTransactionWithIds(const Ids& ids) {
    return inOneCommit("delete transactions", [&] {
        std::vector<NTransaction> cancelled;
        for (auto id : ids) {
            auto found = txnPersistence_->getTransactionsWithIds({id});
            auto entries = stores_.changeRegister()->entriesOf(ChangeQueue::current, textsOf({id}));
            if (!entries) return false;
            cancelled.push_back(found && !found->empty() ? found->front() : NTransaction{.id = id});
            if (found && !found->empty() && !entries->empty())
                afterCommit(
                    [change = Change::of(found->front(), entries->front())] { changeNotices::cancelled(change); });
        }
        afterCommit([this] { runSchedulers(); });
        return takeOut(cancelled) && endInRegister(cancelled, ChangeOutcome::cancelled);
    });
}

/// Takes transactions out of the queue, which frees what waits for them: the schedulers are to run after it.
bool TransactionQueue::takeOut(const std::vector<NTransaction>& transactions) {
    Ids ids;
    for (auto& transaction : transactions) ids.push_back(transaction.id);
    afterCommit([this, ids] {
        for (auto id : ids) inactiveTransactionTracker_.removeTransactionInfo(id);
    });
    return txnPersistence_->deleteTransactionWithIds(ids);
}

bool TransactionQueue::deleteTransactionWithRecordId(const std::string& recordId) {
    return inOneCommit("delete the transactions of a record", [&] {
        auto ids = txnPersistence_->getTransactionIdsWithRecordIds({recordId}, kindsWhere([](auto) { return true; }));
        return ids && deleteTransactionWithIds(*ids) && txnPersistence_->deleteTransactionWithRecordId(recordId);
    });
}

bool TransactionQueue::endInRegister(const std::vector<NTransaction>& transactions, ChangeOutcome outcome) {
    std::vector<EndedChange> ended;
    for (auto& each : transactions) ended.push_back({std::to_string(each.id), each.module.rawValue(), each.recordId});
    return stores_.changeRegister()->end(ChangeQueue::current, ended, outcome);
}

// Ids, errors, and the way back from them.

bool TransactionQueue::replaceRecordIdentifiers(const Identifiers& identifiers, std::int64_t transactionId) {
    return inOneCommit("replace record ids",
                       [&] { return waiters_.replaceRecordIdentifiers(identifiers, transactionId); });
}

bool TransactionQueue::updateError(std::int64_t id, const ErrorResponse& error) {
    return inOneCommit("keep an error", [&] { return waiters_.fail(id, error); });
}

bool TransactionQueue::resetTransaction(std::int64_t id) {
    return inOneCommit("reset a transaction", [&] {
        afterCommit([this] { wake(); });
        return reset(id, 0);
    });
}

/// What is being sent, here or by another process, stays as it is: made ready, it would be sent twice.
bool TransactionQueue::reset(std::int64_t id, std::int64_t syncAttempt) {
    auto stored = txnPersistence_->getTransactionsWithIds({id});
    if (!stored || !waiters_.recover(id)) return false;
    bool isSending = !stored->empty() && stored->front().status.which == Status::Case::syncing;
    return isSending || txnPersistence_->setSyncAttempt(syncAttempt, Status::active(), id);
}

}  // namespace tarvo
