#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/DispatchQueue.h"
#include "platform/operations/Operation.h"

namespace tarvo::platform {

/// What an operation and the queues share. The mutex of a queue may be held when one of these is taken, not the other
/// way round.
struct Operation::State {
    bool isAnnounced() const;

    mutable std::mutex mutex;
    bool executing = false;
    bool finished = false;
    bool cancelled = false;
    // That the operation has finished was told to queue and waiters. Queues go by this alone and never ask the virtual
    // `isFinished` under their lock.
    bool announced = false;
    std::vector<std::shared_ptr<Operation>> dependencies;
    std::function<void()> completion;
    // The queue that the operation was given to. It stays alive until the operation has finished.
    std::shared_ptr<OperationQueueState> queue;
    // Queues in which operations wait for this one.
    std::vector<std::weak_ptr<OperationQueueState>> waiters;
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

    mutable std::mutex mutex;
    const std::shared_ptr<DispatchQueue> threads;
    std::size_t limit = 0;
    bool suspended = false;
    // While everything is being cancelled nothing starts, or the end of one would start the next just before its turn
    // to be cancelled.
    int cancelling = 0;
    std::vector<Entry> waiting;  // in the order of arrival
    std::vector<Entry> running;  // handed to the pool and not finished

private:
    bool adopt(Operation& operation);
    bool mayStart(const Entry& entry) const;
    void start(Entry entry);
};

}  // namespace tarvo::platform
