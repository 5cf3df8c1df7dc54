#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <vector>

#include "platform/Clock.h"
#include "platform/DispatchQueue.h"
#include "platform/ThreadSafety.h"

namespace tarvo::platform {

/// One timer. Whoever moves it away from `pending`, the item on its queue or a canceller, owns the work.
struct Timer::State {
    enum class Phase { pending, begun, cancelled };

    State(std::shared_ptr<DispatchQueue> queue, Clock::SteadyTime due, Work work);
    bool leavePending(Phase phase);
    bool cancel();

    Mutex mutex;
    Phase phase TARVO_GUARDED_BY(mutex) = Phase::pending;
    Work work;
    std::shared_ptr<DispatchQueue> queue;  // until it has been handed over or cancelled
    const Clock::SteadyTime due;
};

/// The timers of the process in the order of their times, and the thread that waits for the next one. It follows
/// `Clock`: while the clock is set by hand only a change of the clock makes timers fire, on the thread that changes it.
class Timers {
public:
    static Timers& shared();

    void add(std::shared_ptr<Timer::State> timer);
    void remove(Timer::State& timer);
    void cancelAll();
    bool anyDue() const;

private:
    Timers();
    void startServing() TARVO_REQUIRES(mutex_);
    void serve();
    void clockChanged();
    void fireDue();
    std::shared_ptr<Timer::State> nextDue();

    mutable Mutex mutex_;
    Condition changed_;
    std::multimap<Clock::SteadyTime, std::shared_ptr<Timer::State>> waiting_ TARVO_GUARDED_BY(mutex_);
    bool serving_ TARVO_GUARDED_BY(mutex_) = false;
    /// The time at which the thread looks for due timers without being woken.
    Clock::SteadyTime sleepsUntil_ TARVO_GUARDED_BY(mutex_) = Clock::SteadyTime::max();
};

}  // namespace tarvo::platform
