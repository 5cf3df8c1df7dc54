#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

#include "platform/Clock.h"

namespace tarvo::sandbox {

/// Gives the server's time: the system's, moved by an offset that a control call sets. Safe to use from any thread.
class ServerClock {
public:
    std::chrono::milliseconds offset() const { return std::chrono::milliseconds(offset_.load()); }
    void setOffset(std::chrono::milliseconds offset) { offset_ = offset.count(); }

    /// Returns milliseconds since 1970, never below zero, since times on the wire are unsigned.
    std::int64_t milliseconds() const {
        auto now = (platform::Clock::now().time_since_epoch() + offset()).count();
        return now < 0 ? 0 : static_cast<std::int64_t>(now);
    }

private:
    std::atomic<std::int64_t> offset_ = 0;
};

}  // namespace tarvo::sandbox
