#include "platform/internal/WaitGraph.h"

#include <algorithm>
#include <vector>

#include "platform/ThreadSafety.h"
#include "platform/internal/QueueState.h"
#include "platform/internal/ThreadRecord.h"

namespace tarvo::platform {

namespace {

// Taken before the mutex of a queue, never after.
Mutex& graphMutex() {
    static auto* mutex = new Mutex;
    return *mutex;
}

// Whether a thread stands in the way of the queue's turn, itself or through what the queue's holders wait for.
bool dependsOn(const QueueState& queue, const ThreadRecord& thread) {
    std::vector<ThreadRecord*> reached;
    queue.appendHolders(reached);
    for (std::size_t i = 0; i < reached.size(); ++i) {
        if (reached[i] == &thread) return true;
        auto waiter = reached[i]->awaiting;
        if (!waiter || !waiter->queue.isWaiting(*waiter)) continue;
        std::vector<ThreadRecord*> holders;
        waiter->queue.appendHolders(holders);
        for (auto* holder : holders)
            if (std::find(reached.begin(), reached.end(), holder) == reached.end()) reached.push_back(holder);
    }
    return false;
}

}  // namespace

bool WaitGraph::enter(const Waiter& waiter) {
    MutexLock lock(graphMutex());
    // A turn that was granted between lining up and entering makes the thread a holder, which looks like a cycle.
    if (dependsOn(waiter.queue, waiter.thread) && waiter.queue.isWaiting(waiter)) return false;
    waiter.thread.awaiting = &waiter;
    return true;
}

void WaitGraph::leave(const Waiter& waiter) {
    MutexLock lock(graphMutex());
    waiter.thread.awaiting = nullptr;
}

}  // namespace tarvo::platform
