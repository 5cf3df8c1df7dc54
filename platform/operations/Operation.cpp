#include "platform/operations/Operation.h"

#include <algorithm>
#include <utility>

#include "platform/DispatchQueue.h"
#include "platform/ProgrammingError.h"
#include "platform/internal/OperationState.h"

namespace tarvo::platform {

bool Operation::State::isAnnounced() const {
    MutexLock lock(mutex);
    return announced;
}

Operation::Operation() : state_(std::make_unique<State>()) {}
Operation::~Operation() = default;

void Operation::start() {
    bool cancelled;
    {
        MutexLock lock(state_->mutex);
        if (state_->executing || state_->finished) return;
        cancelled = state_->cancelled;
        state_->executing = !cancelled;
    }
    if (!cancelled) {
        try {
            main();
        } catch (...) {
            reportProgrammingError("An exception left the main of an operation");
        }
    }
    finishAnyway();
}

void Operation::finishAnyway() {
    {
        MutexLock lock(state_->mutex);
        state_->executing = false;
        state_->finished = true;
    }
    announceFinished();
}

void Operation::announceFinished() {
    std::vector<std::shared_ptr<Operation>> dependencies;
    std::shared_ptr<OperationQueueState> queue;
    std::vector<std::weak_ptr<OperationQueueState>> waiters;
    std::function<void()> completion;
    {
        MutexLock lock(state_->mutex);
        if (std::exchange(state_->announced, true)) return;
        dependencies.swap(state_->dependencies);
        queue.swap(state_->queue);
        waiters.swap(state_->waiters);
        completion.swap(state_->completion);
    }
    // The queue may hold the last reference.
    auto self = strongSelf(this);
    if (queue) queue->hasFinished(*this);
    for (auto& waiter : waiters)
        if (auto other = waiter.lock()) other->startReady();
    if (completion) completion();
}

bool Operation::isExecuting() const {
    MutexLock lock(state_->mutex);
    return state_->executing;
}

bool Operation::isFinished() const {
    MutexLock lock(state_->mutex);
    return state_->finished;
}

void Operation::cancel() {
    std::shared_ptr<OperationQueueState> queue;
    {
        MutexLock lock(state_->mutex);
        if (state_->announced || std::exchange(state_->cancelled, true)) return;
        queue = state_->queue;
    }
    if (queue) queue->startReady();
}

bool Operation::isCancelled() const {
    MutexLock lock(state_->mutex);
    return state_->cancelled;
}

void Operation::addDependency(std::shared_ptr<Operation> operation) {
    MutexLock lock(state_->mutex);
    if (operation && !state_->announced) state_->dependencies.push_back(std::move(operation));
}

std::vector<std::shared_ptr<Operation>> Operation::dependencies() const {
    MutexLock lock(state_->mutex);
    return state_->dependencies;
}

bool Operation::isReady() const {
    if (isCancelled()) return true;
    auto needed = dependencies();
    return std::all_of(needed.begin(), needed.end(), [](auto& each) { return each->state_->isAnnounced(); });
}

void Operation::setCompletionBlock(std::function<void()> block) {
    {
        MutexLock lock(state_->mutex);
        if (!state_->announced) {
            state_->completion.swap(block);
            return;
        }
    }
    if (block) block();
}

void Operation::willChangeValue(std::string_view) {}

void Operation::didChangeValue(std::string_view key) {
    if (key == "isFinished" && isFinished()) announceFinished();
}

}  // namespace tarvo::platform
