#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>

#include "platform/DispatchQueue.h"
#include "platform/ThreadSafety.h"

namespace tarvo::platform {

/// An async item that its queue has admitted.
struct AdmittedItem {
    std::shared_ptr<QueueState> queue;
    Work work;
    bool exclusive = false;
};

/// The threads behind all queues. As many run as the machine has processors (at least two), plus one for each that
/// says it is blocked. Threads that block without saying so are noticed by the supervisor: when items wait and none
/// has been taken for a while, it adds a thread. The pool is never destroyed; idle threads end with the process.
class Workers {
public:
    static Workers& shared();

    void submit(AdmittedItem item);

    /// Around a stretch in which the calling pool thread waits.
    void willBlock();
    void didUnblock();

    /// Count of async items from `async` until they have run and left their queue.
    void itemAdded() { outstanding_.fetch_add(1, std::memory_order_relaxed); }
    void itemsDone(int count);
    bool waitUntilNoItems(std::chrono::steady_clock::time_point deadline);

    std::size_t threadCount() const;

private:
    Workers();
    void work();
    bool awaitItem(MutexLock& lock) TARVO_REQUIRES(mutex_);
    AdmittedItem take() TARVO_REQUIRES(mutex_);
    std::size_t waiting() const TARVO_REQUIRES(mutex_) { return ready_[0].size() + ready_[1].size(); }
    /// Whether there are more threads than are needed, beyond a number of them.
    bool isSpareBeyond(std::size_t count) const TARVO_REQUIRES(mutex_) { return threads_ > blocked_ + target_ + count; }
    void addThreadIfUseful() TARVO_REQUIRES(mutex_);
    void addThread() TARVO_REQUIRES(mutex_);
    void supervise();
    bool isStuck(MutexLock& lock) TARVO_REQUIRES(mutex_);

    const std::size_t target_;

    mutable Mutex mutex_;
    Condition itemReady_;
    Condition superviseNow_;
    std::array<std::deque<AdmittedItem>, 2> ready_ TARVO_GUARDED_BY(mutex_);  // standard, background
    std::size_t threads_ TARVO_GUARDED_BY(mutex_) = 0;
    std::size_t idle_ TARVO_GUARDED_BY(mutex_) = 0;
    std::size_t leaving_ TARVO_GUARDED_BY(mutex_) = 0;  // idle threads that end unless an item comes soon
    std::size_t blocked_ TARVO_GUARDED_BY(mutex_) = 0;
    std::uint64_t taken_ TARVO_GUARDED_BY(mutex_) = 0;
    bool supervised_ TARVO_GUARDED_BY(mutex_) = false;
    bool toldOfLimit_ TARVO_GUARDED_BY(mutex_) = false;

    std::atomic<std::int64_t> outstanding_ = 0;
    Mutex outstandingMutex_;
    Condition noneOutstanding_;
};

}  // namespace tarvo::platform
