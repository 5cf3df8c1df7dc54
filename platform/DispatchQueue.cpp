#include "platform/DispatchQueue.h"

#include "platform/Clock.h"
#include "platform/Log.h"
#include "platform/ProgrammingError.h"
#include "platform/internal/QueueState.h"
#include "platform/internal/Timers.h"
#include "platform/internal/Workers.h"

namespace tarvo::platform {

DispatchQueue::DispatchQueue(std::string label, bool concurrent, Quality quality)
    : label_(label), state_(std::make_shared<QueueState>(std::move(label), concurrent, quality)) {}

DispatchQueue::~DispatchQueue() = default;

std::shared_ptr<DispatchQueue> DispatchQueue::serial(std::string label, Quality quality) {
    return std::shared_ptr<DispatchQueue>(new DispatchQueue(std::move(label), false, quality));
}

std::shared_ptr<DispatchQueue> DispatchQueue::concurrent(std::string label, Quality quality) {
    return std::shared_ptr<DispatchQueue>(new DispatchQueue(std::move(label), true, quality));
}

void DispatchQueue::async(Work work) { state_->async(std::move(work), false); }
void DispatchQueue::asyncBarrier(Work work) { state_->async(std::move(work), true); }
void DispatchQueue::syncImpl(bool barrier, FunctionRef<void()> work) { state_->sync(barrier, work); }

Timer DispatchQueue::asyncAfter(std::chrono::milliseconds delay, Work work) {
    // Beyond this a time would no longer fit; nobody is there to see the difference.
    constexpr std::chrono::milliseconds longest = std::chrono::years(100);
    auto due = Clock::steadyNow() + std::clamp(delay, std::chrono::milliseconds::zero(), longest);
    auto timer = std::make_shared<Timer::State>(shared_from_this(), due, std::move(work));
    Timers::shared().add(timer);
    return Timer(std::move(timer));
}

bool DispatchQueue::isCurrent() const { return state_->isHeldByThisThread(); }
bool DispatchQueue::onAnyQueue() { return ThreadRecord::current().innermost != nullptr; }

void DispatchQueue::assertCurrent() const {
    if (!isCurrent()) reportProgrammingError("This work belongs on the queue \"" + label_ + "\"");
}

BlockingScope::BlockingScope() {
    auto& thread = ThreadRecord::current();
    if (thread.isWorker && thread.blockingDepth++ == 0) Workers::shared().willBlock();
}

BlockingScope::~BlockingScope() {
    auto& thread = ThreadRecord::current();
    if (thread.isWorker && --thread.blockingDepth == 0) Workers::shared().didUnblock();
}

bool WorkerPool::waitUntilIdle(std::chrono::milliseconds atMost) {
    if (ThreadRecord::current().isWorker) {
        reportProgrammingError("An item of the pool waits until the pool is idle, which it never is meanwhile");
        return false;
    }
    auto deadline = std::chrono::steady_clock::now() + atMost;
    // A timer that is due is about to become an item; the timer thread needs a moment for it.
    do {
        if (!Workers::shared().waitUntilNoItems(deadline)) return false;
        if (!Timers::shared().anyDue()) return true;
        std::this_thread::yield();
    } while (std::chrono::steady_clock::now() < deadline);
    return false;
}

void WorkerPool::cancelAllTimers() { Timers::shared().cancelAll(); }
std::size_t WorkerPool::threadCount() { return Workers::shared().threadCount(); }

}  // namespace tarvo::platform
