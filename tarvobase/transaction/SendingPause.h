#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "platform/DispatchQueue.h"
#include "platform/ThreadSafety.h"
#include "tarvobase/transaction/BackOff.h"

namespace tarvo {

/// A time in which a queue sends nothing: the server did not answer, or another process sends the changes of the
/// database. It ends with its time, or when somebody ends it. Any thread may use it.
class SendingPause {
public:
    using Ended = std::function<void()>;  // runs on a queue of its own when the time is over

    SendingPause() = default;
    ~SendingPause() { end(); }
    SendingPause(const SendingPause&) = delete;
    SendingPause& operator=(const SendingPause&) = delete;

    /// Pauses for the server, each time longer, until it answers. Sends that were on their way together count once.
    void waitForServer(Ended ended, bool isSignedOut = false);
    void serverHasAnswered();
    void waitForOtherProcess(Ended ended);
    void end();

    /// Returns the end of the pause in milliseconds since 1970, or nullopt if there is none.
    std::optional<std::int64_t> until() const;
    bool isForOtherProcess() const;
    /// Returns when the first send had no answer, in milliseconds since 1970, or nullopt after an answer.
    std::optional<std::int64_t> since() const;
    /// Returns whether there was no token for the last send.
    bool isSignedOut() const;

private:
    void begin(std::chrono::milliseconds duration, Ended ended) TARVO_REQUIRES(mutex_);

    const std::shared_ptr<DispatchQueue> queue_ = DispatchQueue::serial("com.tarvo.txn.pause");

    mutable platform::Mutex mutex_;
    BackOff backOff_ TARVO_GUARDED_BY(mutex_);
    std::optional<std::int64_t> until_ TARVO_GUARDED_BY(mutex_);
    bool isForOtherProcess_ TARVO_GUARDED_BY(mutex_) = false;
    bool isSignedOut_ TARVO_GUARDED_BY(mutex_) = false;
    platform::Timer timer_ TARVO_GUARDED_BY(mutex_);
};

}  // namespace tarvo
