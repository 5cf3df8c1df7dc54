#pragma once

#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "platform/DispatchQueue.h"
#include "platform/ThreadSafety.h"
#include "platform/internal/ThreadRecord.h"
#include "platform/internal/WaitGraph.h"

namespace tarvo::platform {

/// The working part of a queue. Items are admitted from the front of one line: an exclusive item (every item of a
/// serial queue, a barrier of a concurrent one) when nothing else is under way, a shared one when no exclusive item
/// is. Nobody overtakes the front, so a waiting barrier holds back the readers behind it and no writer starves.
///
/// An admitted async item goes to the pool; an admitted `sync` is a thread that is woken and runs its work itself.
class QueueState : public std::enable_shared_from_this<QueueState> {
public:
    QueueState(std::string label, bool concurrent, DispatchQueue::Quality quality);

    void async(Work work, bool barrier);
    void sync(bool barrier, FunctionRef<void()> work);
    /// Runs an admitted async item, and then a batch of further ones if it is exclusive. On a pool thread.
    void runAdmitted(Work work, bool exclusive);
    /// Runs an item that another loop than the pool brings, as an exclusive one of this queue.
    void runForeign(Work work);

    bool isHeldByThisThread() const { return ThreadRecord::current().find(*this) != nullptr; }
    const std::string& label() const { return label_; }
    DispatchQueue::Quality quality() const { return quality_; }

    // For the wait graph.
    void appendHolders(std::vector<ThreadRecord*>& holders) const;
    bool isWaiting(const Waiter& waiter) const;
    /// Blocks until the waiter was granted its turn or, if it stands in no line, until `finish`: then another thread
    /// runs its work.
    void awaitGrant(Waiter& waiter);
    void finish(Waiter& waiter);

private:
    // An async item, or a thread that waits for its turn.
    struct Entry {
        Work work;
        Waiter* waiter;
        bool exclusive;
    };

    bool canStart(bool exclusive) const TARVO_REQUIRES(mutex_) { return !exclusive_ && !(exclusive && sharing_ > 0); }
    void start(bool exclusive) TARVO_REQUIRES(mutex_);
    void admit() TARVO_REQUIRES(mutex_);
    bool enter(bool exclusive);
    bool awaitTurn(Waiter& waiter);
    void withdraw(const Waiter& waiter);
    void leave(bool exclusive);
    bool nextOfBatch(Work& work);
    void runItem(Work work);

    const std::string label_;
    const bool concurrent_;
    const DispatchQueue::Quality quality_;

    mutable Mutex mutex_;
    std::deque<Entry> line_ TARVO_GUARDED_BY(mutex_);
    bool exclusive_ TARVO_GUARDED_BY(mutex_) = false;
    std::size_t sharing_ TARVO_GUARDED_BY(mutex_) = 0;
    // Threads that run an item right now. An admitted item that no thread has taken yet has none.
    std::vector<ThreadRecord*> holders_ TARVO_GUARDED_BY(mutex_);
};

}  // namespace tarvo::platform
