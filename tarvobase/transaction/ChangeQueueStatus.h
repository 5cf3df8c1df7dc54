#pragma once

#include <cstdint>
#include <optional>

namespace tarvo {

/// What the queue of changes of an open database does at a moment.
struct ChangeQueueStatus {
    enum class State {
        off,      ///< it was not started, or was stopped
        idle,     ///< nothing can go at the moment
        sending,  ///< at least one request is on its way
        waiting   ///< for the next try, since the server did not answer or another process sends
    };

    State state = State::off;
    /// While waiting: milliseconds since 1970 of the next try.
    std::optional<std::int64_t> until{};
    bool isLockedOut = false;  ///< another process sends
    /// While waiting for the server: milliseconds since 1970 of the first send without an answer.
    std::optional<std::int64_t> since{};
    bool isSignedOut = false;  ///< there was no token for the last send
};

}  // namespace tarvo
