#pragma once

#include <string_view>

#include "platform/ThreadSafety.h"
#include "platform/operations/Operation.h"

namespace tarvo {

/// An operation that ends after `main` has returned. Whoever does its work calls `completeOperation` once, from any
/// thread. Until then it counts as executing, and operations that depend on it wait. If it is cancelled before its
/// start, it never runs `main` and is finished at once.
class AsynchronousOperation : public platform::Operation {
public:
    bool isAsynchronous() const override { return true; }
    bool isExecuting() const override { return get(&AsynchronousOperation::executing_); }
    bool isFinished() const override { return get(&AsynchronousOperation::finished_); }

    void start() override;
    void completeOperation();

private:
    using State = bool AsynchronousOperation::*;
    bool get(State state) const;
    /// Sets the state and announces the change of `key` before and after.
    void set(State state, bool value, std::string_view key);

    mutable platform::Mutex stateLock_;
    bool executing_ TARVO_GUARDED_BY(stateLock_) = false;
    bool finished_ TARVO_GUARDED_BY(stateLock_) = false;
};

}  // namespace tarvo
