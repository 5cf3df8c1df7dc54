#include "platform/internal/Timers.h"

#include <algorithm>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/Log.h"

namespace tarvo::platform {

Timer::State::State(std::shared_ptr<DispatchQueue> queue, Clock::SteadyTime due, Work work)
    : work(std::move(work)), queue(std::move(queue)), due(due) {}

bool Timer::State::leavePending(Phase next) {
    MutexLock lock(mutex);
    if (phase != Phase::pending) return false;
    phase = next;
    return true;
}

bool Timer::State::cancel() {
    if (!leavePending(Phase::cancelled)) return false;
    // Nobody else touches the work any more; it goes here, under no lock.
    Work dropped = std::move(work);
    return true;
}

bool Timer::cancel() {
    if (!state_ || !state_->cancel()) return false;
    Timers::shared().remove(*state_);
    return true;
}

bool Timer::isPending() const {
    if (!state_) return false;
    MutexLock lock(state_->mutex);
    return state_->phase == State::Phase::pending;
}

namespace {

void handOver(const std::shared_ptr<Timer::State>& timer) {
    auto queue = std::exchange(timer->queue, nullptr);
    queue->async([timer] {
        // Asked again here: the timer may have been cancelled while the item stood in line.
        if (!timer->leavePending(Timer::State::Phase::begun)) return;
        Work work = std::move(timer->work);
        work();
    });
}

}  // namespace

Timers& Timers::shared() {
    static auto* timers = new Timers;
    return *timers;
}

Timers::Timers() {
    Clock::onChange([this] { clockChanged(); });
}

void Timers::add(std::shared_ptr<Timer::State> timer) {
    {
        MutexLock lock(mutex_);
        auto due = timer->due;
        waiting_.emplace(due, std::move(timer));
        if (!serving_) startServing();
        // Most timers are limits that are cancelled long before they are due, and each would wake the thread.
        if (due < sleepsUntil_) changed_.notifyOne();
    }
    // Nobody moves a clock that stands still; what is due already must not wait for that.
    if (Clock::isSet()) fireDue();
}

void Timers::startServing() {
    try {
        std::thread([this] { serve(); }).detach();
        serving_ = true;
    } catch (const std::system_error&) {
        log(LogLevel::warning, "queues", "No thread for timers; the next timer tries again");
    }
}

void Timers::remove(Timer::State& timer) {
    std::shared_ptr<DispatchQueue> released;
    MutexLock lock(mutex_);
    auto [begin, end] = waiting_.equal_range(timer.due);
    auto found = std::find_if(begin, end, [&](const auto& entry) { return entry.second.get() == &timer; });
    if (found == end) return;
    waiting_.erase(found);
    released = std::move(timer.queue);
}

void Timers::cancelAll() {
    decltype(waiting_) dropped;
    {
        MutexLock lock(mutex_);
        dropped.swap(waiting_);
    }
    for (auto& [due, timer] : dropped) {
        timer->cancel();
        timer->queue.reset();
    }
}

bool Timers::anyDue() const {
    auto now = Clock::steadyNow();
    MutexLock lock(mutex_);
    return !waiting_.empty() && waiting_.begin()->first <= now;
}

std::shared_ptr<Timer::State> Timers::nextDue() {
    auto now = Clock::steadyNow();
    MutexLock lock(mutex_);
    if (waiting_.empty() || waiting_.begin()->first > now) return nullptr;
    auto timer = std::move(waiting_.begin()->second);
    waiting_.erase(waiting_.begin());
    return timer;
}

void Timers::fireDue() {
    while (auto timer = nextDue()) handOver(timer);
}

void Timers::clockChanged() {
    if (Clock::isSet()) fireDue();
    MutexLock lock(mutex_);
    changed_.notifyOne();
}

void Timers::serve() {
    MutexLock lock(mutex_);
    for (;;) {
        if (waiting_.empty() || Clock::isSet()) {
            sleepsUntil_ = Clock::SteadyTime::max();
            changed_.wait(lock);
            continue;
        }
        sleepsUntil_ = waiting_.begin()->first;
        auto left = sleepsUntil_ - Clock::steadyNow();
        if (left > left.zero()) {
            changed_.waitFor(lock, left);
            continue;
        }
        lock.unlock();
        fireDue();
        lock.lock();
    }
}

}  // namespace tarvo::platform
