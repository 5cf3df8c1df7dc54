#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "platform/DispatchQueue.h"
#include "platform/ThreadSafety.h"
#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/transaction/TransactionExecutor.h"
#include "tarvobase/value_objects/transaction/TransactionPersistence.h"

namespace tarvo {

/// Sends the transactions of the current queue one at a time: either those that upload a file, or all others, so that a
/// long upload holds up no small change. It picks the next transaction, counts the start, hands it to the runner, and
/// goes on when that has completed or has used up its time.
///
///     off   -- startSync -->  idle
///     idle  -- run, and a transaction can go -->  running it
///     running  -- its completion -->  the next one, or idle
///     running  -- the time limit -->  the next one, or idle; the one left behind may still complete, and frees no
///     place any   -- stopSync -->  off once the running one has completed
///
/// A transaction that was started `maxSyncAttempt` times gives up: it keeps an error, and `TransactionStatusObserver`
/// is notified.
class TransactionScheduler final : public TransactionSchedulerContract {
public:
    struct Parts {
        bool isAttachmentSync = false;
        std::shared_ptr<DatabaseAdapter> databaseAdapter;
        std::shared_ptr<TransactionPersistence> txnPersistence;
        std::weak_ptr<TransactionRunner> txnRunner;
        int maxSyncAttempt = 3;
        std::chrono::seconds maxSyncTimeInterval{300};
    };

    explicit TransactionScheduler(Parts parts);
    ~TransactionScheduler() override;

    void startSync() override;
    void run() override;
    void stopSync() override;
    void whenResting(std::function<void()> callback) override;

    /// Returns what this scheduler serves.
    const TransactionPersistence::Kinds& kinds() const { return kinds_; }

private:
    enum class Picked { started, gaveUp, none };
    bool isOn() const;
    void sync();
    Picked pickNext();
    std::optional<NTransaction> claimNext(TransactionRunner& runner, std::optional<NTransaction>& givenUp);
    void start(const NTransaction& transaction);
    void finish(std::int64_t place);
    void rest();
    void onQueue(std::function<void(TransactionScheduler&)> work);

    const Parts parts_;
    const TransactionPersistence::Kinds kinds_;
    const std::shared_ptr<DispatchQueue> criticalSectionQueue_ =
        DispatchQueue::serial("com.tarvo.txn.sync.critical", DispatchQueue::Quality::background);

    // These belong to the queue.
    std::optional<std::int64_t> running_;  // the place of the running transaction; no place is given twice
    std::int64_t lastPlace_ = 0;
    bool isMoreLikely_ = false;  // a transaction was started since the last look
    SendingLock::Share share_;   // from the first pick until it rests
    platform::Timer limit_;
    std::vector<std::function<void()>> resting_;

    mutable platform::Mutex mutex_;
    bool syncTransaction_ TARVO_GUARDED_BY(mutex_) = false;
};

}  // namespace tarvo
