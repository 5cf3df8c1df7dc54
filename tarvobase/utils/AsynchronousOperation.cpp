#include "tarvobase/utils/AsynchronousOperation.h"

#include "platform/ProgrammingError.h"

namespace tarvo {

namespace {
constexpr std::string_view executingKey = "isExecuting";
constexpr std::string_view finishedKey = "isFinished";
}  // namespace

void AsynchronousOperation::start() {
    // `main` may end the operation on another thread, and with it the last reference of its queue.
    auto self = platform::strongSelf(this);
    if (isCancelled()) {
        set(finished_, true, finishedKey);
        return;
    }
    set(executing_, true, executingKey);
    try {
        main();
    } catch (...) {
        // Left unfinished, it would hold up all that depends on it.
        platform::reportProgrammingError("An exception left the main of an asynchronous operation");
        completeOperation();
    }
}

void AsynchronousOperation::completeOperation() {
    auto self = platform::strongSelf(this);
    set(executing_, false, executingKey);
    set(finished_, true, finishedKey);
}

bool AsynchronousOperation::get(const bool& state) const {
    std::lock_guard lock(stateLock_);
    return state;
}

void AsynchronousOperation::set(bool& state, bool value, std::string_view key) {
    willChangeValue(key);
    {
        std::lock_guard lock(stateLock_);
        state = value;
    }
    didChangeValue(key);
}

}  // namespace tarvo
