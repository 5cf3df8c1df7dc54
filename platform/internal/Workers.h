#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>

#include "platform/DispatchQueue.h"

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
    bool awaitItem(std::unique_lock<std::mutex>& lock);
    AdmittedItem take();
    std::size_t waiting() const { return ready_[0].size() + ready_[1].size(); }
    bool isSpare() const { return threads_ > blocked_ + target_; }
    void addThreadIfUseful();
    void addThread();
    void supervise();
    bool isStuck(std::unique_lock<std::mutex>& lock);

    const std::size_t target_;

    mutable std::mutex mutex_;
    std::condition_variable itemReady_;
    std::condition_variable superviseNow_;
    std::array<std::deque<AdmittedItem>, 2> ready_;  // standard, background
    std::size_t threads_ = 0;
    std::size_t idle_ = 0;
    std::size_t blocked_ = 0;
    std::uint64_t taken_ = 0;
    bool supervised_ = false;
    bool toldOfLimit_ = false;

    std::atomic<std::int64_t> outstanding_ = 0;
    std::mutex outstandingMutex_;
    std::condition_variable noneOutstanding_;
};

}  // namespace tarvo::platform
