#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/DispatchQueue.h"
#include "platform/FileLock.h"
#include "platform/Object.h"
#include "platform/ThreadSafety.h"
#include "tarvobase/transaction/BackOff.h"
#include "tarvobase/transaction/ChangeQueueStatus.h"

namespace tarvo {

/// The changes that a drain sends. The drain calls every operation on its own queue, one at a time; each blocks for the
/// database.
class DrainedChanges : public virtual platform::Object {
public:
    /// The change that is to be sent next. Without an id there is none that can go now.
    struct Next {
        std::optional<std::string> transactionID{};
        bool hasFailed = false;  ///< the queue could not be read or written
    };
    enum class Outcome {
        settled,   ///< the server's decision is stored
        noAnswer,  ///< the server has not decided, or its decision could not be stored; the change is ready again
    };
    /// Stores what came back. The drain runs it on its queue.
    using Settle = std::function<Outcome()>;

    /// Makes the changes ready whose sending nobody waits for any more: a process has ended between claim and answer.
    /// Called when the drain begins, while no other process drains. Returns false if the database refuses.
    virtual bool reclaim() = 0;
    /// Notes that changes were stored, so that what is known of the queue is read again.
    virtual void refresh() = 0;
    /// Marks the next change that can go as being sent. A change is never claimed twice without being settled between.
    virtual Next claimNext() = 0;
    /// Sends a claimed change. Calls back exactly once, on any thread.
    virtual void send(const std::string& transactionID, std::function<void(Settle)> answered) = 0;
};

/// Sends the changes of one open database: on from `start` to `stop`, at most four requests at a time. A lock file lets
/// one process drain at a time; it is held only while something is being sent, so that the changes of every process on
/// the same home get their turn.
///
/// Sends without an answer back off, from one second, doubled up to five minutes. A new change, `start` or a retry ends
/// the wait. All operations may be called from any thread and return at once.
class ChangeDrain final : public virtual platform::Object {
public:
    using Status = ChangeQueueStatus;
    using State = Status::State;

    static constexpr int mostRequests = 4;
    static constexpr std::chrono::milliseconds lockWait{500};

    /// Makes a drain that is off. Without a path of a lock file, nobody else can drain, as with a database in memory.
    ChangeDrain(std::shared_ptr<DrainedChanges> changes, std::optional<std::string> lockFile);
    ~ChangeDrain() override;

    void start();
    /// Sends nothing more. The answers of requests on their way are still taken in. `stopped` is called on the drain's
    /// queue once none is left.
    void stop(std::function<void()> stopped = {});
    /// Call it after the commit of a new change, and when the network may be back. Ends a wait.
    void wake();

    Status status() const;
    /// Returns how many changes were sent so far.
    std::int64_t sendCount() const { return sendCount_; }
    /// Calls back on the drain's queue, once nothing is on its way and nothing can go on at the moment: the queue is
    /// empty, all that is left waits or has failed, or the drain is off.
    void whenResting(std::function<void()> callback);

private:
    void pass();
    bool canBegin();
    void claimAndSend();
    void answered(const DrainedChanges::Settle& settle);
    void waitFor(std::chrono::milliseconds duration, bool isLockedOut);
    void backOff();
    void endWait();
    void rest();
    void publish();
    void onQueue(std::function<void(ChangeDrain&)> work);

    const std::shared_ptr<DrainedChanges> changes_;
    const std::shared_ptr<DispatchQueue> queue_ = DispatchQueue::serial("tarvo.changes");

    // These belong to the queue.
    std::optional<platform::FileLock> lock_;
    bool isOn_ = false;
    bool hasBegun_ = false;  // holds the lock, and has reclaimed
    int inFlight_ = 0;
    std::atomic<std::int64_t> sendCount_ = 0;
    BackOff backOff_;
    bool isWaiting_ = false;
    platform::Timer timer_;
    Status current_;
    std::vector<std::function<void()>> resting_;

    mutable platform::Mutex mutex_;
    Status published_ TARVO_GUARDED_BY(mutex_);
};

}  // namespace tarvo
