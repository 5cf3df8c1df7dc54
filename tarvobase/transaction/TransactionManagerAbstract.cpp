#include "tarvobase/transaction/TransactionManagerAbstract.h"

#include <algorithm>
#include <atomic>
#include <iterator>
#include <utility>

#include "platform/Log.h"
#include "platform/ProgrammingError.h"
#include "platform/Text.h"
#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/database_layer/TransactionEnd.h"
#include "tarvobase/transaction/ChangeNotices.h"
#include "tarvobase/transaction/TemporaryIdsInPayload.h"
#include "tarvobase/transaction/TransactionRepair.h"

namespace tarvo {

namespace {

using Status = NTransaction::Status;
using Ids = TransactionManagerAbstract::Ids;

/// How much longer than asked a transaction is held back.
constexpr std::chrono::seconds extraDelay{10};

std::vector<std::string> textsOf(const Ids& ids) {
    std::vector<std::string> texts;
    for (auto id : ids) texts.push_back(std::to_string(id));
    return texts;
}

/// A transaction on its way.
struct TransactionOnItsWay {
    SendingLock::Share share;
    std::atomic<bool> isCompleted = false;
};

void logResult(const NTransaction& transaction, std::string_view what, const std::string& end) {
    platform::log(platform::LogLevel::progress, "transactions",
                  std::string(what) + " id: " + std::to_string(transaction.id) +
                      " kind: " + std::string(caseName(transaction.kind)) + end);
}

}  // namespace

TransactionManagerAbstract::TransactionManagerAbstract(const Stores& stores,
                                                       std::shared_ptr<UserDefaultsProtocol> userDefaults)
    : stores_(stores),
      txnPersistence_(stores.currentTransactions()),
      txnDependencyPersistence_(stores.transactionDependencies()),
      transactionIds_(stores),
      waiters_(stores),
      recordIds_(stores, std::move(userDefaults)) {}

TransactionManagerAbstract::~TransactionManagerAbstract() { inactiveTransactionTracker_.removeAll(); }

bool TransactionManagerAbstract::inOneCommit(std::string_view name, platform::FunctionRef<bool()> steps) {
    auto& database = stores_.databaseAdapter();
    return database && database->transaction(name, steps);
}

std::string TransactionManagerAbstract::getNewRecordId() {
    auto id = recordIds_.getNewRecordId();
    while (isRecordIdTaken && isRecordIdTaken(id)) id = recordIds_.getNewRecordId();
    return id;
}

// Switching on and off.

void TransactionManagerAbstract::startSync() {
    {
        platform::MutexLock lock(mutex_);
        isOn_ = true;
    }
    pause_.end();
    normalScheduler->startSync();
    attachmentScheduler->startSync();
}

void TransactionManagerAbstract::stopSync() {
    {
        platform::MutexLock lock(mutex_);
        isOn_ = false;
    }
    normalScheduler->stopSync();
    attachmentScheduler->stopSync();
}

/// What another process has on its way, or holds back, stays.
bool TransactionManagerAbstract::initialize() {
    inactiveTransactionTracker_.removeAll();
    auto share = sendingLock->tryTake();
    bool isStored = inOneCommit("initialize transactions", [&] {
        auto queued = txnPersistence_->prepare() ? txnPersistence_->getTransactions() : std::nullopt;
        if (!queued) return false;
        for (auto& transaction : queued->transactions)
            if (!stores_.changeRegister()->enter(ChangeQueue::current, std::to_string(transaction.id))) return false;
        return TransactionRepair(stores_).repair(*queued) && (!share || reclaim(true));
    });
    platform::MutexLock lock(mutex_);
    if (!share || !isStored) isHeldBackToo_ = true;
    return isStored;
}

// Adding.

bool TransactionManagerAbstract::addTransactions(const std::vector<NTransaction>& transactions,
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

void TransactionManagerAbstract::hold(const NTransaction& transaction) {
    if (transaction.status.which != Status::Case::inactive) return;
    auto delay = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::duration<double>(std::max(0.0, transaction.status.delay)) + extraDelay);
    auto timer = timerQueue_->asyncAfter(delay, [weak = platform::weakSelf(this), id = transaction.id] {
        if (auto self = weak.lock()) self->activateTransactionWithId(id);
    });
    inactiveTransactionTracker_.add({transaction.id, transaction.recordId, transaction.kind, timer});
}

bool TransactionManagerAbstract::addMergedTransaction(const NTransaction& transaction, const Dependencies& dependencies,
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
        if (!keepNumberOfAdd(transaction, *merged)) return false;
        bool isSamePayload = !former->empty() && former->front().payload == transaction.payload;
        auto entry = stores_.changeRegister()->enter(ChangeQueue::current, std::to_string(transaction.id));
        if (!entry || !endInRegister(*merged, ChangeOutcome::merged)) return false;
        if (!isSamePayload && !stores_.changeRegister()->renewKey(entry->number)) return false;
        for (auto id : others) afterCommit([this, id] { inactiveTransactionTracker_.removeTransactionInfo(id); });
        afterCommit([this] { wake(); });
        return reset(transaction.id, attempts == Attempts::keep ? transaction.syncAttempt : 0);
    });
}

/// An edit that is merged with the add of its record is the add from then on, and has its number: who takes back the
/// number of the edit must not lose the record. The survivor may be another row of the queue than the add.
bool TransactionManagerAbstract::keepNumberOfAdd(const NTransaction& survivor,
                                                 const std::vector<NTransaction>& merged) {
    auto add = std::find_if(merged.begin(), merged.end(), [](auto& each) { return createsRecord(each.kind); });
    if (add == merged.end() || !createsRecord(survivor.kind)) return true;
    return endInRegister({survivor}, ChangeOutcome::merged) &&
           stores_.changeRegister()->passOn(ChangeQueue::current, std::to_string(add->id), std::to_string(survivor.id));
}

/// A transaction that is on its way, or whose fate at the server is not known, is only ever repeated as it is: as a
/// part of another one the server would take it for a new change.
bool TransactionManagerAbstract::canBeMerged(const Ids& ids, const NTransaction& survivor) {
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

bool TransactionManagerAbstract::activate(const Ids& ids) {
    auto stored = ids.empty() ? std::vector<NTransaction>() : txnPersistence_->getTransactionsWithIds(ids);
    if (!stored) return false;
    Ids inactive;
    for (auto& transaction : *stored)
        if (transaction.status.which == Status::Case::inactive) inactive.push_back(transaction.id);
    return txnPersistence_->setStatus(Status::active(), inactive);
}

/// Only what is still held back becomes active: by now it may be on its way, and would be sent twice.
bool TransactionManagerAbstract::activateTransactionWithId(std::int64_t id) {
    inactiveTransactionTracker_.removeTransactionInfo(id);
    bool isStored = inOneCommit("activate a transaction", [&] { return activate({id}); });
    if (isStored) wake();
    return isStored;
}

bool TransactionManagerAbstract::activateAllInactiveTransactions() {
    inactiveTransactionTracker_.removeAll();
    bool isStored = txnPersistence_->replaceStatus({Status::Case::inactive}, Status::active());
    if (isStored) wake();
    return isStored;
}

/// A row that cannot be read goes without a word: nobody was notified that it is there.
bool TransactionManagerAbstract::deleteTransactionWithIds(const Ids& ids) {
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
        return takeOut(cancelled) && endInRegister(cancelled, ChangeOutcome::cancelled);
    });
}

/// Takes transactions out of the queue, which frees what waits for them.
bool TransactionManagerAbstract::takeOut(const std::vector<NTransaction>& transactions) {
    Ids ids;
    for (auto& transaction : transactions) ids.push_back(transaction.id);
    afterCommit([this, ids] {
        for (auto id : ids) inactiveTransactionTracker_.removeTransactionInfo(id);
        runSchedulers();
    });
    return txnPersistence_->deleteTransactionWithIds(ids);
}

bool TransactionManagerAbstract::deleteTransactionWithRecordId(const std::string& recordId) {
    return inOneCommit("delete the transactions of a record", [&] {
        auto ids = txnPersistence_->getTransactionIdsWithRecordIds({recordId}, kindsWhere([](auto) { return true; }));
        return ids && deleteTransactionWithIds(*ids) && txnPersistence_->deleteTransactionWithRecordId(recordId);
    });
}

bool TransactionManagerAbstract::endInRegister(const std::vector<NTransaction>& transactions, ChangeOutcome outcome) {
    std::vector<EndedChange> ended;
    for (auto& each : transactions) ended.push_back({std::to_string(each.id), each.module.rawValue(), each.recordId});
    return stores_.changeRegister()->end(ChangeQueue::current, ended, outcome);
}

// Ids, errors, and the way back from them.

bool TransactionManagerAbstract::replaceRecordIdentifiers(const Identifiers& identifiers, std::int64_t transactionId) {
    return inOneCommit("replace record ids",
                       [&] { return waiters_.replaceRecordIdentifiers(identifiers, transactionId); });
}

bool TransactionManagerAbstract::updateError(std::int64_t id, const ErrorResponse& error) {
    return inOneCommit("keep an error", [&] { return waiters_.fail(id, error); });
}

bool TransactionManagerAbstract::resetTransaction(std::int64_t id) {
    return inOneCommit("reset a transaction", [&] {
        afterCommit([this] { wake(); });
        return reset(id, 0);
    });
}

/// What is being sent, here or by another process, stays as it is: made ready, it would be sent twice.
bool TransactionManagerAbstract::reset(std::int64_t id, std::int64_t syncAttempt) {
    auto stored = txnPersistence_->getTransactionsWithIds({id});
    if (!stored || !waiters_.recover(id)) return false;
    bool isSending = !stored->empty() && stored->front().status.which == Status::Case::syncing;
    return isSending || txnPersistence_->setSyncAttempt(syncAttempt, Status::active(), id);
}

// Running, and what comes back.

bool TransactionManagerAbstract::isBeingSent(std::int64_t id) const {
    platform::MutexLock lock(mutex_);
    return inFlight_.contains(id);
}

/// Returns the share that the schedulers have already, or a new one. Another process may have ended since there was
/// one.
SendingLock::Share TransactionManagerAbstract::begin() {
    if (pause_.until()) return nullptr;
    SendingLock::Share share;
    bool mustReclaim = false, isHeldBackToo = false;
    {
        platform::MutexLock lock(mutex_);
        share = share_.lock();
        bool isNew = !share;
        if (isNew) share_ = share = sendingLock->tryTake();
        if (share) {
            mustReclaim = std::exchange(mustReclaim_, false) || isNew;
            isHeldBackToo = std::exchange(isHeldBackToo_, false);
        }
    }
    if (!share) pause_.waitForOtherProcess(wakeLater());
    if (!share || !mustReclaim || reclaim(isHeldBackToo)) return share;
    {
        platform::MutexLock lock(mutex_);
        mustReclaim_ = true;
        isHeldBackToo_ = isHeldBackToo_ || isHeldBackToo;
    }
    pause_.waitForServer(wakeLater());
    return nullptr;
}

/// Makes ready what nobody sends any more, and what got no answer.
bool TransactionManagerAbstract::reclaim(bool isHeldBackToo) {
    // Without a commit, which a queue without such transactions does not need.
    auto left = abandoned(isHeldBackToo), silent = unanswered();
    if (!left || !silent) return false;
    if (left->empty() && silent->empty()) return true;
    std::set<std::int64_t> unstored;
    {
        platform::MutexLock lock(mutex_);
        unstored.swap(unstored_);
    }
    bool isStored = inOneCommit("reclaim transactions", [&] {
        left = abandoned(isHeldBackToo), silent = unanswered();
        if (!left || !silent || !txnPersistence_->setStatus(Status::active(), *left)) return false;
        // The other scheduler may have looked already.
        afterCommit([this] { runSchedulers(); });
        std::copy_if(left->begin(), left->end(), std::back_inserter(*silent),
                     [&](auto id) { return unstored.contains(id); });
        return sendAgain(*silent);
    });
    if (isStored) return true;
    platform::MutexLock lock(mutex_);
    unstored_.merge(unstored);
    return false;
}

std::optional<Ids> TransactionManagerAbstract::abandoned(bool isHeldBackToo) const {
    std::vector<Status::Case> cases{Status::Case::syncing};
    if (isHeldBackToo) cases.push_back(Status::Case::inactive);
    auto ids = txnPersistence_->getTransactionIdsWithStatus(cases);
    if (ids) std::erase_if(*ids, [&](auto id) { return isBeingSent(id); });
    return ids;
}

std::optional<Ids> TransactionManagerAbstract::unanswered() const {
    auto entries = stores_.changeRegister()->unanswered(ChangeQueue::current);
    if (!entries) return std::nullopt;
    Ids ids;
    for (auto& entry : *entries)
        if (auto id = text::toInteger(entry.transactionId); id && !isBeingSent(*id)) ids.push_back(*id);
    return ids;
}

bool TransactionManagerAbstract::noteStart(const NTransaction& transaction) {
    auto entry = stores_.changeRegister()->enter(ChangeQueue::current, std::to_string(transaction.id));
    if (!entry || !stores_.changeRegister()->noteSend(entry->number)) return false;
    platform::MutexLock lock(mutex_);
    inFlight_.insert(transaction.id);
    return true;
}

void TransactionManagerAbstract::forgetStart(const NTransaction& transaction) {
    platform::MutexLock lock(mutex_);
    inFlight_.erase(transaction.id);
}

void TransactionManagerAbstract::run(const NTransaction& transaction, std::function<void()> onCompletion) {
    auto one = std::make_shared<TransactionOnItsWay>();
    {
        platform::MutexLock lock(mutex_);
        one->share = share_.lock();
    }
    ++startCount_;
    logResult(transaction, "syncing transaction.", "");
    auto complete = [weak = platform::weakSelf(this), transaction, one,
                     onCompletion = std::move(onCompletion)](const TransactionResult& result) {
        if (one->isCompleted.exchange(true)) return logResult(transaction, "a second completion was ignored.", "");
        auto share = std::move(one->share);
        auto self = weak.lock();
        if (self) self->settle(transaction, result);
        onCompletion();
        if (result.afterwards) result.afterwards();
        if (self) self->endRun();
    };
    if (!transactionExecutorDI) {
        platform::reportProgrammingError("a transaction was run before transactionExecutorDI was set");
        return complete(TransactionResult::failure(ErrorResponse::invlaidTransaction()));
    }
    // Nobody will ever give the record an id: what would create it is gone.
    if (namesTemporaryId(transaction, FreeText(stores_)))
        return complete(TransactionResult::failure(ErrorResponse::dependingTransactionFailed()));
    transactionExecutorDI->getExecutor(transaction)->execute(transaction, complete);
}

void TransactionManagerAbstract::settle(const NTransaction& transaction, const TransactionResult& result) {
    if (result.outcome && resultAccepted) resultAccepted(transaction);
    bool isStored = inOneCommit("result of a transaction", [&] {
        return result.outcome ? storeSuccess(transaction, result) : storeFailure(transaction, result);
    });
    bool isDecided = isStored && !result.silence;
    // The pause comes first: what is not on its way any more is sent again after it.
    if (isDecided)
        pause_.serverHasAnswered();
    else
        pause_.waitForServer(wakeLater(), result.silence == TransactionResult::notSignedIn);
    {
        platform::MutexLock lock(mutex_);
        inFlight_.erase(transaction.id);
        ++endingRuns_;
        if (!isStored) unstored_.insert(transaction.id);
        if (!isDecided) mustReclaim_ = true;
    }
    if (!isStored) logResult(transaction, "the result of a transaction could not be stored.", "");
    if (resultStored) resultStored();
}

void TransactionManagerAbstract::endRun() {
    runSchedulers();
    std::vector<std::function<void()>> resting;
    {
        platform::MutexLock lock(mutex_);
        if (--endingRuns_ == 0) resting.swap(resting_);
    }
    for (auto& callback : resting) whenResting(std::move(callback));
}

bool TransactionManagerAbstract::storeSuccess(const NTransaction& transaction, const TransactionResult& result) {
    auto& identifiers = result.outcome.value();
    auto entries = stores_.changeRegister()->entriesOf(ChangeQueue::current, {std::to_string(transaction.id)});
    if (!entries) return false;
    // Values of the server go beneath all that is in the queue, and over what this transaction has changed itself. One
    // that creates records stays until what waits for it has their ids.
    auto storeRows = [&] { return !result.store || result.store(); };
    auto ended = transaction;
    std::optional<std::string> formerId;
    if (auto found = identifiers.find(transaction.recordId); found != identifiers.end()) {
        formerId = transaction.recordId;
        ended.recordId = found->second;
    }
    bool isStored = identifiers.empty() ? takeOut({transaction}) && storeRows()
                                        : storeRows() && replaceRecordIdentifiers(identifiers, transaction.id) &&
                                              takeOut({transaction});
    if (!isStored || !endInRegister({ended}, ChangeOutcome::accepted)) return false;
    // One that was taken out while it was on its way is settled already.
    bool isLateEdit = entries->empty() && depndencyType(transaction.kind) == RecordDependency::Kind::edit;
    if (isLateEdit && lateEditAccepted) afterCommit([notify = lateEditAccepted, ended] { notify(ended); });
    if (!entries->empty())
        afterCommit(
            [change = Change::of(ended, entries->front()), formerId] { changeNotices::accepted(change, formerId); });
    logResult(transaction, "transaction successful.", "");
    return true;
}

/// A failure without an answer concerns no other transaction: all that waits goes on waiting.
bool TransactionManagerAbstract::storeFailure(const NTransaction& transaction, const TransactionResult& result) {
    auto& error = result.outcome.error();
    auto entries = stores_.changeRegister()->entriesOf(ChangeQueue::current, {std::to_string(transaction.id)});
    if (!entries || (result.store && !result.store())) return false;
    auto lastWords = result.silence ? ErrorResponse::noAnswer(*result.silence) : error;
    bool mayBeApplied = result.silence || result.mayBeApplied || error.code == ErrorResponse::parsingFailed().code;
    if (!entries->empty() && !stores_.changeRegister()->noteRefusal(entries->front().number, lastWords, mayBeApplied))
        return false;
    if (!entries->empty() && result.isUnsent && !stores_.changeRegister()->noteUnsent({entries->front().number}))
        return false;
    logResult(transaction, "transaction failed.", ". error: " + error.code);
    bool isErrorStored = result.silence ? txnPersistence_->setTransactionErrors({{transaction.id, error}})
                                        : updateError(transaction.id, error);
    return isErrorStored && txnPersistence_->setStatus(Status::active(), transaction.id);
}

// Waiting for the server, or for another process.

ChangeQueueStatus TransactionManagerAbstract::status() const {
    using State = ChangeQueueStatus::State;
    auto until = pause_.until();
    platform::MutexLock lock(mutex_);
    auto state = !inFlight_.empty() ? State::sending : !isOn_ ? State::off : until ? State::waiting : State::idle;
    return {.state = state,
            .until = until,
            .isLockedOut = until && pause_.isForOtherProcess(),
            .since = pause_.since(),
            .isSignedOut = pause_.isSignedOut()};
}

void TransactionManagerAbstract::wake() {
    pause_.end();
    runSchedulers();
}

std::function<void()> TransactionManagerAbstract::wakeLater() {
    return [weak = platform::weakSelf(this)] {
        if (auto self = weak.lock()) self->wake();
    };
}

bool TransactionManagerAbstract::sendAgain(const Ids& ids) {
    if (ids.empty()) return true;
    auto entries = stores_.changeRegister()->entriesOf(ChangeQueue::current, textsOf(ids));
    if (!entries || !txnPersistence_->clearError(ids)) return false;
    for (auto& entry : *entries)
        if (!stores_.changeRegister()->forgetRefusal(entry.number)) return false;
    return std::all_of(ids.begin(), ids.end(), [&](auto id) { return reset(id, 0); });
}

void TransactionManagerAbstract::runSchedulers() {
    normalScheduler->run();
    attachmentScheduler->run();
}

void TransactionManagerAbstract::whenResting(std::function<void()> callback) {
    auto unlessRunsEnd = [weak = platform::weakSelf(this), callback = std::move(callback)] {
        if (auto self = weak.lock()) {
            platform::MutexLock lock(self->mutex_);
            // What comes after a result may make another transaction ready.
            if (self->endingRuns_ > 0) return self->resting_.push_back(callback);
        }
        callback();
    };
    normalScheduler->whenResting([attachments = attachmentScheduler, unlessRunsEnd = std::move(unlessRunsEnd)] {
        attachments->whenResting(unlessRunsEnd);
    });
}

}  // namespace tarvo
