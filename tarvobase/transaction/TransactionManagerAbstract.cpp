#include "tarvobase/transaction/TransactionManagerAbstract.h"

#include <algorithm>
#include <atomic>
#include <utility>

#include "platform/Clock.h"
#include "platform/Log.h"
#include "platform/ProgrammingError.h"
#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/database_layer/TransactionEnd.h"
#include "tarvobase/transaction/ChangeNotices.h"
#include "tarvobase/transaction/TemporaryIdsInPayload.h"

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

TransactionManagerAbstract::~TransactionManagerAbstract() {
    inactiveTransactionTracker_.removeAll();
    retryTimer_.cancel();
}

bool TransactionManagerAbstract::inOneCommit(std::string_view name, platform::FunctionRef<bool()> steps) {
    auto& database = stores_.databaseAdapter();
    return database && database->transaction(name, steps);
}

// Switching on and off.

void TransactionManagerAbstract::startSync() {
    {
        platform::MutexLock lock(mutex_);
        isOn_ = true;
    }
    endWait();
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

bool TransactionManagerAbstract::initialize() {
    inactiveTransactionTracker_.removeAll();
    return inOneCommit("initialize transactions", [&] {
        auto queued = txnPersistence_->prepare() ? txnPersistence_->getTransactions() : std::nullopt;
        if (!queued) return false;
        Ids abandoned, unanswered;
        for (auto& transaction : queued->transactions) {
            auto entry = stores_.changeRegister()->enter(ChangeQueue::current, std::to_string(transaction.id));
            if (!entry) return false;
            if (isBeingSent(transaction.id)) continue;
            auto status = transaction.status.which;
            if (status == Status::Case::syncing || status == Status::Case::inactive)
                abandoned.push_back(transaction.id);
            if (entry->lastRefusal && entry->lastRefusal->isNoAnswer()) unanswered.push_back(transaction.id);
        }
        auto olderAdds = stores_.changeRegister()->transactionNumbers();
        if (!olderAdds) return false;
        auto freed = txnDependencyPersistence_->removeDanglingDependencies(*olderAdds);
        if (!freed) return false;
        for (auto id : *freed)
            platform::log(platform::LogLevel::warning, "transactions",
                          "transaction " + std::to_string(id) + " waited for one that is gone");
        return txnPersistence_->setStatus(Status::active(), abandoned) && sendAgain(unanswered);
    });
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
        if (!former || !txnPersistence_->addMergedTransaction(transaction, left, mergedTransactions)) return false;
        bool isSamePayload = !former->empty() && former->front().payload == transaction.payload;
        auto entry = stores_.changeRegister()->enter(ChangeQueue::current, std::to_string(transaction.id));
        if (!entry || !removeFromRegister(others)) return false;
        if (!isSamePayload && !stores_.changeRegister()->renewKey(entry->number)) return false;
        for (auto id : others) afterCommit([this, id] { inactiveTransactionTracker_.removeTransactionInfo(id); });
        afterCommit([this] { wake(); });
        return reset(transaction.id, attempts == Attempts::keep ? transaction.syncAttempt : 0);
    });
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
    bool isUnknown = std::any_of(entries->begin(), entries->end(),
                                 [](auto& entry) { return entry.sends > 0 && !entry.isKnownToBeRefused(); });
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

bool TransactionManagerAbstract::deleteTransactionWithIds(const Ids& ids) {
    return inOneCommit("delete transactions", [&] {
        afterCommit([this, ids] {
            for (auto id : ids) inactiveTransactionTracker_.removeTransactionInfo(id);
            runSchedulers();
        });
        return txnPersistence_->deleteTransactionWithIds(ids) && removeFromRegister(ids);
    });
}

bool TransactionManagerAbstract::deleteTransactionWithRecordId(const std::string& recordId) {
    return inOneCommit("delete the transactions of a record", [&] {
        auto ids = txnPersistence_->getTransactionIdsWithRecordIds({recordId}, kindsWhere([](auto) { return true; }));
        return ids && deleteTransactionWithIds(*ids) && txnPersistence_->deleteTransactionWithRecordId(recordId);
    });
}

bool TransactionManagerAbstract::removeFromRegister(const Ids& ids) {
    return ids.empty() || stores_.changeRegister()->remove(ChangeQueue::current, textsOf(ids));
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
    return inOneCommit("reset a transaction", [&] { return reset(id, 0); });
}

/// What this process is sending stays as it is: made ready, it would be sent twice.
bool TransactionManagerAbstract::reset(std::int64_t id, std::int64_t syncAttempt) {
    return waiters_.recover(id) &&
           (isBeingSent(id) || txnPersistence_->setSyncAttempt(syncAttempt, Status::active(), id));
}

// Running, and what comes back.

bool TransactionManagerAbstract::isBeingSent(std::int64_t id) const {
    platform::MutexLock lock(mutex_);
    return inFlight_.contains(id);
}

bool TransactionManagerAbstract::noteStart(const NTransaction& transaction) {
    auto entry = stores_.changeRegister()->enter(ChangeQueue::current, std::to_string(transaction.id));
    return entry && stores_.changeRegister()->noteSend(entry->number);
}

void TransactionManagerAbstract::run(const NTransaction& transaction, std::function<void()> onCompletion) {
    {
        platform::MutexLock lock(mutex_);
        inFlight_.insert(transaction.id);
    }
    ++startCount_;
    logResult(transaction, "syncing transaction.", "");
    auto isCompleted = std::make_shared<std::atomic<bool>>(false);
    auto complete = [weak = platform::weakSelf(this), transaction, isCompleted,
                     onCompletion = std::move(onCompletion)](const TransactionResult& result) {
        if (isCompleted->exchange(true)) return logResult(transaction, "a second completion was ignored.", "");
        auto self = weak.lock();
        if (self) self->settle(transaction, result);
        onCompletion();
        if (result.afterwards) result.afterwards();
        if (self) self->runSchedulers();
    };
    if (!transactionExecutorDI) {
        platform::reportProgrammingError("a transaction was run before transactionExecutorDI was set");
        return complete(TransactionResult::failure(ErrorResponse::invlaidTransaction()));
    }
    // Nobody will ever give the record an id: what would create it is gone.
    if (namesTemporaryId(transaction))
        return complete(TransactionResult::failure(ErrorResponse::dependingTransactionFailed()));
    transactionExecutorDI->getExecutor(transaction)->execute(transaction, complete);
}

void TransactionManagerAbstract::settle(const NTransaction& transaction, const TransactionResult& result) {
    bool isStored = inOneCommit("result of a transaction", [&] {
        return result.outcome ? storeSuccess(transaction, result) : storeFailure(transaction, result);
    });
    bool isDecided = isStored && !result.silence;
    {
        platform::MutexLock lock(mutex_);
        inFlight_.erase(transaction.id);
        if (isDecided) backOff_.reset();
        if (!isDecided) unanswered_.insert(transaction.id);
    }
    if (!isStored) logResult(transaction, "the result of a transaction could not be stored.", "");
    if (!isDecided) backOff();
    if (resultStored) resultStored();
}

bool TransactionManagerAbstract::storeSuccess(const NTransaction& transaction, const TransactionResult& result) {
    auto& identifiers = result.outcome.value();
    auto entries = stores_.changeRegister()->entriesOf(ChangeQueue::current, {std::to_string(transaction.id)});
    if (!entries) return false;
    // Values of the server go beneath all that is in the queue, and over what this transaction has changed itself. One
    // that creates records stays until what waits for it has their ids.
    auto storeRows = [&] { return !result.store || result.store(); };
    bool isStored = identifiers.empty() ? deleteTransactionWithId(transaction.id) && storeRows()
                                        : storeRows() && replaceRecordIdentifiers(identifiers, transaction.id) &&
                                              deleteTransactionWithId(transaction.id);
    if (!isStored) return false;
    auto change = Change::of(transaction, entries->empty() ? ChangeEntry() : entries->front());
    std::optional<std::string> formerId;
    if (auto found = identifiers.find(transaction.recordId); found != identifiers.end()) {
        formerId = transaction.recordId;
        change.recordId = found->second;
    }
    afterCommit([change, formerId] { changeNotices::accepted(change, formerId); });
    logResult(transaction, "transaction successful.", "");
    return true;
}

/// A failure without an answer concerns no other transaction: all that waits goes on waiting.
bool TransactionManagerAbstract::storeFailure(const NTransaction& transaction, const TransactionResult& result) {
    auto& error = result.outcome.error();
    auto entries = stores_.changeRegister()->entriesOf(ChangeQueue::current, {std::to_string(transaction.id)});
    if (!entries || (result.store && !result.store())) return false;
    auto lastWords = result.silence ? ErrorResponse::noAnswer(*result.silence) : error;
    bool mayBeApplied = result.silence || error.code == ErrorResponse::parsingFailed().code;
    if (!entries->empty() && !stores_.changeRegister()->noteRefusal(entries->front().number, lastWords, mayBeApplied))
        return false;
    logResult(transaction, "transaction failed.", ". error: " + error.code);
    bool isErrorStored = result.silence ? txnPersistence_->setTransactionErrors({{transaction.id, error}})
                                        : updateError(transaction.id, error);
    return isErrorStored && txnPersistence_->setStatus(Status::active(), transaction.id);
}

// Waiting for the server.

bool TransactionManagerAbstract::isRunnable() const {
    platform::MutexLock lock(mutex_);
    return !nextTry_;
}

ChangeQueueStatus TransactionManagerAbstract::status() const {
    using State = ChangeQueueStatus::State;
    platform::MutexLock lock(mutex_);
    auto state = !inFlight_.empty() ? State::sending : !isOn_ ? State::off : nextTry_ ? State::waiting : State::idle;
    return {.state = state, .until = nextTry_};
}

void TransactionManagerAbstract::backOff() {
    platform::MutexLock lock(mutex_);
    if (nextTry_) return;
    auto wait = backOff_.next();
    nextTry_ = (platform::Clock::now() + wait).time_since_epoch().count();
    retryTimer_ = timerQueue_->asyncAfter(wait, [weak = platform::weakSelf(this)] {
        if (auto self = weak.lock()) self->wake();
    });
}

void TransactionManagerAbstract::wake() {
    endWait();
    runSchedulers();
}

/// While sending is off, what got no answer stays as it is.
void TransactionManagerAbstract::endWait() {
    std::set<std::int64_t> unanswered;
    {
        platform::MutexLock lock(mutex_);
        nextTry_.reset();
        retryTimer_.cancel();
        if (isOn_) unanswered.swap(unanswered_);
    }
    if (unanswered.empty()) return;
    Ids ids(unanswered.begin(), unanswered.end());
    if (inOneCommit("send transactions again", [&] { return sendAgain(ids); })) return;
    platform::MutexLock lock(mutex_);
    unanswered_.merge(unanswered);
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
    normalScheduler->whenResting(
        [attachments = attachmentScheduler, callback = std::move(callback)] { attachments->whenResting(callback); });
}

}  // namespace tarvo
