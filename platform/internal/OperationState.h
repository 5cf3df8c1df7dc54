#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "platform/DispatchQueue.h"
#include "platform/ThreadSafety.h"
#include "platform/operations/Operation.h"

namespace tarvo::platform {

/// What an operation and the queues share. The mutex of a queue may be held when one of these is taken, not the other
/// way round.
struct Operation::State {
    bool isAnnounced() const;

    mutable Mutex mutex;
    bool executing TARVO_GUARDED_BY(mutex) = false;
    bool finished TARVO_GUARDED_BY(mutex) = false;
    bool cancelled TARVO_GUARDED_BY(mutex) = false;
    // The end of the operation was reported to its queue and to the waiters. Queues go by this alone and never ask the
    // virtual `isFinished` under their lock.
    bool announced TARVO_GUARDED_BY(mutex) = false;
    std::vector<std::shared_ptr<Operation>> dependencies TARVO_GUARDED_BY(mutex);
    std::function<void()> completion TARVO_GUARDED_BY(mutex);
    // The queue that the operation was given to. It stays alive until the operation has finished.
    std::shared_ptr<OperationQueueState> queue TARVO_GUARDED_BY(mutex);
    // Queues in which operations wait for this one.
    std::vector<std::weak_ptr<OperationQueueState>> waiters TARVO_GUARDED_BY(mutex);
};

/// The working part of an operation queue. Shared with its operations, so that it outlives the queue while any is left.
class OperationQueueState : public std::enable_shared_from_this<OperationQueueState> {
public:
    struct Entry {
        std::shared_ptr<Operation> operation;
        bool barrier;
    };

    explicit OperationQueueState(std::string name);
    void add(std::shared_ptr<Operation> operation, bool barrier);
    void startReady();
    void hasFinished(const Operation& operation);

    mutable Mutex mutex;
    const std::shared_ptr<DispatchQueue> threads;
    std::size_t limit TARVO_GUARDED_BY(mutex) = 0;
    bool suspended TARVO_GUARDED_BY(mutex) = false;
    // While everything is being cancelled nothing starts, or the end of one would start the next just before its turn
    // to be cancelled.
    int cancelling TARVO_GUARDED_BY(mutex) = 0;
    std::vector<Entry> waiting TARVO_GUARDED_BY(mutex);  // in the order of arrival
    std::vector<Entry> running TARVO_GUARDED_BY(mutex);  // handed to the pool and not finished

private:
    bool adopt(Operation& operation);
    bool mayStart(const Entry& entry) const TARVO_REQUIRES(mutex);
    void start(Entry entry) TARVO_REQUIRES(mutex);
};

}  // namespace tarvo::platform
