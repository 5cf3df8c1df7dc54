#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>

#include "platform/Clock.h"
#include "platform/ThreadSafety.h"

namespace tarvo::sandbox {

/// Gives the server's time: the system's, moved by an offset that a control call sets. Each call and each change takes
/// a tick, so no two of them have the same time, and a client can ask for what was changed after an answer. Safe to
/// use from any thread.
class ServerClock {
public:
    /// The clock may go back with this, and only with this.
    void setOffset(std::chrono::milliseconds offset) TARVO_EXCLUDES(mutex_) {
        platform::MutexLock lock(mutex_);
        offset_ = offset;
        last_ = 0;
    }

    /// Returns milliseconds since 1970, never below zero, since times on the wire are unsigned.
    std::int64_t milliseconds() const TARVO_EXCLUDES(mutex_) {
        platform::MutexLock lock(mutex_);
        return std::max(last_, system());
    }
    /// Moves the clock on by at least a millisecond and returns the new time.
    std::int64_t tick() TARVO_EXCLUDES(mutex_) {
        platform::MutexLock lock(mutex_);
        return last_ = std::max(last_ + 1, system());
    }

private:
    std::int64_t system() const TARVO_REQUIRES(mutex_) {
        return std::max<std::int64_t>(0, (platform::Clock::now().time_since_epoch() + offset_).count());
    }

    mutable platform::Mutex mutex_;
    std::chrono::milliseconds offset_ TARVO_GUARDED_BY(mutex_){0};
    /// The last tick.
    std::int64_t last_ TARVO_GUARDED_BY(mutex_) = 0;
};

}  // namespace tarvo::sandbox
