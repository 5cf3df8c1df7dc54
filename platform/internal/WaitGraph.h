#pragma once

namespace tarvo::platform {

class QueueState;
struct ThreadRecord;

/// A thread that waits for its turn on a queue. Lives on the stack of that thread.
struct Waiter {
    QueueState& queue;
    ThreadRecord& thread;
    bool granted = false;  // guarded by the queue's mutex
};

/// Which thread waits for which queue, over the whole process. A thread enters before it starts to wait, so the last
/// thread of a cycle sees all the others. While a walk goes on no wait can begin, and a thread that waits keeps what
/// it holds; so a cycle that is found was there at one moment. The graph is asked only by a `sync` that has to wait.
class WaitGraph {
public:
    /// Enters a waiter. Returns false, and enters nothing, if the wait would close a cycle and never end.
    [[nodiscard]] static bool enter(const Waiter& waiter);
    static void leave(const Waiter& waiter);
};

}  // namespace tarvo::platform
