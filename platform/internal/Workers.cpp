#include "platform/internal/Workers.h"

#include <time.h>

#include <algorithm>
#include <system_error>
#include <thread>

#include "platform/Log.h"
#include "platform/internal/QueueState.h"
#include "platform/internal/ThreadRecord.h"

namespace tarvo::platform {

namespace {

using namespace std::chrono_literals;

// How long items may wait without one being taken before a thread is added. Shorter wakes the supervisor for nothing,
// longer delays the work behind an item that blocks.
constexpr auto stuckAfter = 10ms;
// The same while the process keeps all processors busy: more threads would only make them change places.
constexpr auto stuckAfterWhenBusy = 100ms;
// How long a thread above the target waits for work before it ends.
constexpr auto spareThreadLifetime = 3s;
// Background items get one turn in so many while standard ones keep coming, so that they are slow but never starve.
constexpr std::uint64_t backgroundShare = 32;

std::chrono::nanoseconds processorTime() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

// False when the system has no thread to give. Items then stay in line, and the supervisor or the next item tries
// again.
template <class Loop>
bool startThread(Loop loop) {
    try {
        std::thread(std::move(loop)).detach();
        return true;
    } catch (const std::system_error&) {
        return false;
    }
}

std::size_t processors() { return std::max(1u, std::thread::hardware_concurrency()); }

}  // namespace

Workers& Workers::shared() {
    static auto* workers = new Workers;
    return *workers;
}

Workers::Workers() : target_(std::max<std::size_t>(2, processors())) {}

void Workers::submit(AdmittedItem item) {
    MutexLock lock(mutex_);
    auto quality = item.queue->quality();
    ready_[quality == DispatchQueue::Quality::background].push_back(std::move(item));
    if (idle_ > 0) itemReady_.notifyOne();
    addThreadIfUseful();
}

void Workers::addThreadIfUseful() {
    if (waiting() <= idle_) return;
    if (threads_ < blocked_ + target_ && threads_ < WorkerPool::maximumThreads) {
        addThread();
        return;
    }
    if (!supervised_) supervised_ = startThread([this] { supervise(); });
    superviseNow_.notifyOne();
}

void Workers::addThread() {
    if (startThread([this] { work(); })) ++threads_;
}

AdmittedItem Workers::take() {
    ++taken_;
    bool background = ready_[0].empty() || (!ready_[1].empty() && taken_ % backgroundShare == 0);
    auto& line = ready_[background];
    auto item = std::move(line.front());
    line.pop_front();
    return item;
}

bool Workers::awaitItem(MutexLock& lock) {
    ++idle_;
    bool spare = isSpareBeyond(leaving_);
    if (spare) {
        ++leaving_;
        itemReady_.waitFor(lock, spareThreadLifetime, [this] {
            mutex_.assumeHeld();
            return waiting() > 0;
        });
        --leaving_;
    } else {
        itemReady_.wait(lock, [this] {
            mutex_.assumeHeld();
            return waiting() > 0 || isSpareBeyond(leaving_);
        });
    }
    --idle_;
    return waiting() > 0 || !spare || !isSpareBeyond(0);
}

void Workers::work() {
    ThreadRecord::current().isWorker = true;
    MutexLock lock(mutex_);
    for (;;) {
        if (waiting() == 0) {
            if (!awaitItem(lock)) break;
            continue;
        }
        auto item = take();
        lock.unlock();
        item.queue->runAdmitted(std::move(item.work), item.exclusive);
        item = {};
        lock.lock();
    }
    --threads_;
}

void Workers::willBlock() {
    MutexLock lock(mutex_);
    ++blocked_;
    addThreadIfUseful();
}

void Workers::didUnblock() {
    MutexLock lock(mutex_);
    --blocked_;
    // The thread that stood in for this one may go now. Idle threads look anew whether they are spare, unless enough of
    // them do so already: waking them costs more than most of the waits that end here.
    if (isSpareBeyond(leaving_) && idle_ > leaving_) itemReady_.notifyAll();
}

bool Workers::isStuck(MutexLock& lock) {
    auto takenBefore = taken_;
    auto begin = std::chrono::steady_clock::now();
    for (;;) {
        auto usedBefore = processorTime();
        superviseNow_.waitFor(lock, stuckAfter, [&] {
            mutex_.assumeHeld();
            return taken_ != takenBefore || waiting() == 0;
        });
        if (taken_ != takenBefore || waiting() == 0) return false;
        auto passed = std::chrono::steady_clock::now() - begin;
        bool busy = (processorTime() - usedBefore) * 10 > stuckAfter * 8 * processors();
        if (!busy || passed >= stuckAfterWhenBusy) return true;
    }
}

void Workers::supervise() {
    MutexLock lock(mutex_);
    for (;;) {
        superviseNow_.wait(lock, [this] {
            mutex_.assumeHeld();
            return waiting() > idle_;
        });
        if (!isStuck(lock)) continue;
        if (threads_ < WorkerPool::maximumThreads) {
            addThread();
        } else if (!std::exchange(toldOfLimit_, true)) {
            lock.unlock();
            log(LogLevel::warning, "queues",
                "All " + std::to_string(WorkerPool::maximumThreads) + " threads of the pool are in use and work waits");
            lock.lock();
        }
    }
}

void Workers::itemsDone(int count) {
    if (outstanding_.fetch_sub(count, std::memory_order_acq_rel) != count) return;
    MutexLock lock(outstandingMutex_);
    noneOutstanding_.notifyAll();
}

bool Workers::waitUntilNoItems(std::chrono::steady_clock::time_point deadline) {
    MutexLock lock(outstandingMutex_);
    return noneOutstanding_.waitUntil(lock, deadline,
                                      [this] { return outstanding_.load(std::memory_order_acquire) == 0; });
}

std::size_t Workers::threadCount() const {
    MutexLock lock(mutex_);
    return threads_;
}

}  // namespace tarvo::platform
