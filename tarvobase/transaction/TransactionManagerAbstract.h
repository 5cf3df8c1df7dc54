#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <vector>

#include "platform/ThreadSafety.h"
#include "tarvobase/transaction/ChangeQueueStatus.h"
#include "tarvobase/transaction/SendingLock.h"
#include "tarvobase/transaction/SendingPause.h"
#include "tarvobase/transaction/TransactionExecutor.h"
#include "tarvobase/transaction/TransactionQueue.h"

namespace tarvo {

/// The current queue of changes, with what sends them: the schedulers run what the queue holds through here.
///
/// The life of a transaction:
///
///     (none)  -- addTransactions -->  active, or inactive for a delay with a timer
///     inactive  -- its timer, a newer transaction of its record, activate..., initialize -->  active
///     active, without an error, waiting for nobody  -- a scheduler picks it -->  syncing, one more attempt
///     active, attempts used up  -- a scheduler picks it -->  active with "txnMAX_SYNC_ATTEMPT_REACHED"
///     syncing  -- success -->  deleted; its ids go into the rest of the queue, and who waited for it is free
///     syncing  -- refusal -->  active with the error; what waits for it through lookups gets
///                              "txnDEPENDING_TRANSACTION_FAILED"
///     syncing  -- no answer -->  the same with "txnPARSING_FAILED", until the back-off ends; then as it was added
///     syncing  -- its process ended, and another one begins to send -->  active
///     any  -- addMergedTransaction of a later one -->  deleted; the survivor is active and without an error
///     any  -- deleteTransaction -->  deleted
///
/// An active transaction with an error stays until it is reset, merged or deleted. Whatever reads the queue and then
/// writes it is one transaction of the database, which lets one writer in at a time. One process sends at a time: what
/// is `syncing` while this one has the lock, and not on its way from here, was left by a process that has ended.
class TransactionManagerAbstract : public TransactionQueue, public TransactionRunner {
public:
    using TransactionQueue::TransactionQueue;

    void startSync() override;
    void stopSync() override;
    bool initialize() override;

    SendingLock::Share begin() override;
    bool noteStart(const NTransaction& transaction) override;
    void forgetStart(const NTransaction& transaction) override;
    void run(const NTransaction& transaction, std::function<void()> onCompletion) override;
    ChangeQueueStatus status() const;
    /// Returns how many transactions were started so far.
    std::int64_t startCount() const { return startCount_; }
    /// Lets both schedulers look for something to send, and ends a wait for the server.
    void wake() override;
    /// Calls back on a background queue once nothing is on its way and nothing can go at the moment.
    void whenResting(std::function<void()> callback);

    // The assembler sets these before the first use.

    /// Called before a success is stored, on any thread.
    std::function<void(const NTransaction& transaction)> resultAccepted;
    /// Called after a success was stored of an edit that had been taken out while it was on its way: what was brought
    /// back of its record meanwhile need not be what the server has. On any thread.
    std::function<void(const NTransaction& transaction)> lateEditAccepted;
    /// Called after a result was stored, on any thread: it may let changes of the older queue go.
    std::function<void()> resultStored;
    std::shared_ptr<TransactionExecutorDIContract> transactionExecutorDI;
    std::shared_ptr<TransactionSchedulerContract> attachmentScheduler;
    std::shared_ptr<TransactionSchedulerContract> normalScheduler;
    /// Shared with whatever else sends changes of the database.
    std::shared_ptr<SendingLock> sendingLock = std::make_shared<SendingLock>();

private:
    bool isBeingSent(std::int64_t id) const override;
    void settle(const NTransaction& transaction, const TransactionResult& result);
    bool storeSuccess(const NTransaction& transaction, const TransactionResult& result);
    bool storeFailure(const NTransaction& transaction, const TransactionResult& result);
    void endRun();
    bool reclaim(bool isHeldBackToo);
    std::optional<Ids> abandoned(bool isHeldBackToo) const;
    std::optional<Ids> unanswered() const;
    bool sendAgain(const Ids& ids);
    std::function<void()> wakeLater();
    void runSchedulers() override;

    SendingPause pause_;
    std::atomic<std::int64_t> startCount_ = 0;

    platform::Mutex reclaiming_;  // taken before `mutex_`
    mutable platform::Mutex mutex_;
    bool isOn_ TARVO_GUARDED_BY(mutex_) = false;
    std::set<std::int64_t> inFlight_ TARVO_GUARDED_BY(mutex_);  // from the start to the stored result
    int endingRuns_ TARVO_GUARDED_BY(mutex_) = 0;  // results are stored, and what comes after them is not done
    std::vector<std::function<void()>> resting_ TARVO_GUARDED_BY(mutex_);
    std::set<std::int64_t> unstored_ TARVO_GUARDED_BY(mutex_);  // whose result could not be stored
    std::weak_ptr<const void> share_ TARVO_GUARDED_BY(mutex_);  // what the schedulers have of the lock
    bool mustReclaim_ TARVO_GUARDED_BY(mutex_) = false;
    bool isHeldBackToo_ TARVO_GUARDED_BY(mutex_) = false;  // and activate what an ended process held back
};

}  // namespace tarvo
