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
    forgetTimers();
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

// Running, and what comes back.

bool TransactionManagerAbstract::isBeingSent(std::int64_t id) const {
    platform::MutexLock lock(mutex_);
    return inFlight_.contains(id);
}

/// Returns the share that the schedulers have already, or a new one. Another process may have ended since there was
/// one.
SendingLock::Share TransactionManagerAbstract::begin() {
    // What is made ready again goes before what came later, whichever scheduler sends that.
    platform::MutexLock reclaiming(reclaiming_);
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
    bool isEdit = depndencyType(transaction.kind) == RecordDependency::Kind::edit, isLate = entries->empty();
    if (isEdit && !isLate && editSettled && !editSettled(transaction, entries->front().number)) return false;
    if (isEdit && isLate && lateEditAccepted) afterCommit([notify = lateEditAccepted, ended] { notify(ended); });
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
