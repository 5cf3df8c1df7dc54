#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <optional>

#include "platform/Clock.h"

namespace tarvo {

/// How long to wait after sends without an answer: one second, doubled up to five minutes until an answer comes.
class BackOff {
public:
    static constexpr std::chrono::milliseconds firstWait{1000}, longestWait{5 * 60 * 1000};

    /// Returns the next wait.
    std::chrono::milliseconds next() {
        if (silentSends_ == 0) since_ = platform::Clock::now().time_since_epoch().count();
        constexpr int mostDoublings = 20;
        auto wait = firstWait * (std::int64_t{1} << std::min(silentSends_++, mostDoublings));
        return std::min<std::chrono::milliseconds>(wait, longestWait);
    }
    /// The server has answered.
    void reset() { silentSends_ = 0; }
    /// Returns when the first send had no answer, in milliseconds since 1970, or nullopt after an answer.
    std::optional<std::int64_t> since() const { return silentSends_ ? std::optional(since_) : std::nullopt; }

private:
    std::int64_t since_ = 0;
    int silentSends_ = 0;  // since the last answer
};

}  // namespace tarvo
