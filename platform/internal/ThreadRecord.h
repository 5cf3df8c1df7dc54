#pragma once

#include <cstdint>

#include "platform/ThreadSafety.h"

namespace tarvo::platform {

class QueueState;
struct Waiter;

/// A queue that a thread holds while it runs one of the queue's items. Links live on the stack of the thread.
struct HeldQueue {
    const QueueState* queue;
    bool exclusive;
    const HeldQueue* outer;
};

/// What the queues know about one thread. Records are reused and never freed: a thread that walks the wait graph may
/// look at the record of a thread that has just ended.
struct ThreadRecord {
    static ThreadRecord& current();

    /// The hold of a queue by this thread, or null.
    const HeldQueue* find(const QueueState& queue) const;

    // Used by the thread itself alone. The number is never given twice, unlike the system's thread ids.
    std::uint64_t number = 0;
    const HeldQueue* innermost = nullptr;
    bool isWorker = false;
    int blockingDepth = 0;

    // With the mutex of the queue that the thread waits for.
    Condition granted;

    // Guarded by the wait graph.
    const Waiter* awaiting = nullptr;
};

/// Puts a queue on the thread's stack of held queues for the length of a scope.
class HoldScope {
public:
    HoldScope(const QueueState& queue, bool exclusive);
    ~HoldScope();
    HoldScope(const HoldScope&) = delete;
    HoldScope& operator=(const HoldScope&) = delete;

private:
    ThreadRecord& thread_;
    HeldQueue held_;
};

}  // namespace tarvo::platform
