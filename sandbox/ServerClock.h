#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

#include "platform/Clock.h"

namespace tarvo::sandbox {

/// The server's clock: the system's, moved by an offset that a control call sets. Any thread.
class ServerClock {
public:
    std::chrono::milliseconds offset() const { return std::chrono::milliseconds(offset_.load()); }
    void setOffset(std::chrono::milliseconds offset) { offset_ = offset.count(); }

    /// Milliseconds since 1970, never below zero: the wire knows unsigned times only.
    std::int64_t milliseconds() const {
        auto now = (platform::Clock::now().time_since_epoch() + offset()).count();
        return now < 0 ? 0 : static_cast<std::int64_t>(now);
    }

private:
    std::atomic<std::int64_t> offset_ = 0;
};

}  // namespace tarvo::sandbox
