#include "tarvobase/utils/AsynchronousOperation.h"

#include "platform/ProgrammingError.h"

namespace tarvo {

namespace {
constexpr std::string_view executingKey = "isExecuting";
constexpr std::string_view finishedKey = "isFinished";
}  // namespace

void AsynchronousOperation::start() {
    // `main` may end the operation on another thread, which releases the queue's reference to it.
    auto self = platform::strongSelf(this);
    if (isCancelled()) {
        set(&AsynchronousOperation::finished_, true, finishedKey);
        return;
    }
    set(&AsynchronousOperation::executing_, true, executingKey);
    try {
        main();
    } catch (...) {
        // An unfinished operation would block all that depend on it.
        platform::reportProgrammingError("An exception left the main of an asynchronous operation");
        completeOperation();
    }
}

void AsynchronousOperation::completeOperation() {
    auto self = platform::strongSelf(this);
    set(&AsynchronousOperation::executing_, false, executingKey);
    set(&AsynchronousOperation::finished_, true, finishedKey);
}

bool AsynchronousOperation::get(State state) const {
    platform::MutexLock lock(stateLock_);
    return this->*state;
}

void AsynchronousOperation::set(State state, bool value, std::string_view key) {
    willChangeValue(key);
    {
        platform::MutexLock lock(stateLock_);
        this->*state = value;
    }
    didChangeValue(key);
}

}  // namespace tarvo
