#pragma once

#include <mutex>
#include <string_view>

#include "platform/operations/Operation.h"

namespace tarvo {

/// An operation that ends later than `main` returns: whoever carries its work out calls `completeOperation` once, from
/// any thread. Until then it counts as executing, and operations that depend on it wait. Cancelled before its start,
/// it never runs `main` and is finished at once.
class AsynchronousOperation : public platform::Operation {
public:
    bool isAsynchronous() const override { return true; }
    bool isExecuting() const override { return get(executing_); }
    bool isFinished() const override { return get(finished_); }

    void start() override;
    void completeOperation();

private:
    bool get(const bool& state) const;
    /// Announces the change of `key` before and after it.
    void set(bool& state, bool value, std::string_view key);

    mutable std::mutex stateLock_;
    bool executing_ = false;  // both guarded by stateLock_
    bool finished_ = false;
};

}  // namespace tarvo
