#include "platform/operations/OperationQueue.h"

#include <algorithm>
#include <utility>

#include "platform/DispatchQueue.h"
#include "platform/ProgrammingError.h"
#include "platform/internal/OperationState.h"
#include "platform/operations/Operation.h"

namespace tarvo::platform {

OperationQueueState::OperationQueueState(std::string name) : threads(DispatchQueue::concurrent(std::move(name))) {}

bool OperationQueueState::adopt(Operation& operation) {
    auto& state = *operation.state_;
    MutexLock lock(state.mutex);
    if (state.queue || state.announced || state.executing) return false;
    state.queue = shared_from_this();
    return true;
}

void OperationQueueState::add(std::shared_ptr<Operation> operation, bool barrier) {
    if (!adopt(*operation)) {
        reportProgrammingError("An operation was given to a queue that has a queue already, runs, or has finished");
        return;
    }
    // The finish of a dependency before this line is seen by `startReady` below, a later one calls us.
    for (auto& dependency : operation->dependencies()) {
        auto& needed = *dependency->state_;
        MutexLock lock(needed.mutex);
        if (!needed.announced) needed.waiters.push_back(weak_from_this());
    }
    {
        MutexLock lock(mutex);
        waiting.push_back({std::move(operation), barrier});
    }
    startReady();
}

bool OperationQueueState::mayStart(const Entry& entry) const {
    // A barrier begins when it is at the front with nothing under way, and nobody passes it.
    if (entry.barrier) return running.empty() && &entry == &waiting.front();
    return entry.operation->isReady();
}

void OperationQueueState::startReady() {
    MutexLock lock(mutex);
    auto full = [this] {
        mutex.assumeHeld();
        return limit != 0 && running.size() >= limit;
    };
    auto barrierRuns = [this] {
        mutex.assumeHeld();
        return !running.empty() && running.front().barrier;
    };
    for (std::size_t at = 0; at < waiting.size() && !suspended && !cancelling && !full() && !barrierRuns();) {
        bool barrier = waiting[at].barrier;
        if (mayStart(waiting[at])) {
            auto entry = std::move(waiting[at]);
            waiting.erase(waiting.begin() + static_cast<std::ptrdiff_t>(at));
            start(std::move(entry));
        } else {
            ++at;
        }
        if (barrier) return;
    }
}

// Under the lock, so that operations reach the pool in their order.
void OperationQueueState::start(Entry entry) {
    threads->async([operation = entry.operation] {
        try {
            operation->start();
        } catch (...) {
            reportProgrammingError("An exception left the start of an operation");
            operation->finishAnyway();
        }
    });
    running.push_back(std::move(entry));
}

void OperationQueueState::hasFinished(const Operation& operation) {
    {
        MutexLock lock(mutex);
        auto isIt = [&](const Entry& entry) { return entry.operation.get() == &operation; };
        std::erase_if(running, isIt);
        // One that was finished by hand before its turn.
        std::erase_if(waiting, isIt);
    }
    startReady();
}

OperationQueue::OperationQueue(std::string name) : state_(std::make_shared<OperationQueueState>(std::move(name))) {}

OperationQueue::~OperationQueue() {
    std::vector<OperationQueueState::Entry> dropped;
    MutexLock lock(state_->mutex);
    if (state_->suspended) dropped.swap(state_->waiting);
}

void OperationQueue::setMaxConcurrentOperationCount(std::size_t count) {
    {
        MutexLock lock(state_->mutex);
        state_->limit = count;
    }
    state_->startReady();
}

void OperationQueue::setSuspended(bool suspended) {
    {
        MutexLock lock(state_->mutex);
        state_->suspended = suspended;
    }
    state_->startReady();
}

void OperationQueue::addOperation(std::shared_ptr<Operation> operation) {
    if (operation) state_->add(std::move(operation), false);
}

void OperationQueue::addOperation(std::function<void()> block) {
    state_->add(std::make_shared<BlockOperation>(std::move(block)), false);
}

void OperationQueue::addBarrierBlock(std::function<void()> block) {
    state_->add(std::make_shared<BlockOperation>(std::move(block)), true);
}

void OperationQueue::cancelAllOperations() {
    std::vector<std::shared_ptr<Operation>> all;
    {
        MutexLock lock(state_->mutex);
        ++state_->cancelling;
        for (auto* entries : {&state_->waiting, &state_->running})
            for (auto& entry : *entries) all.push_back(entry.operation);
    }
    for (auto& operation : all) operation->cancel();
    {
        MutexLock lock(state_->mutex);
        --state_->cancelling;
    }
    state_->startReady();
}

std::size_t OperationQueue::operationCount() const {
    MutexLock lock(state_->mutex);
    return state_->waiting.size() + state_->running.size();
}

}  // namespace tarvo::platform
