#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "platform/operations/Operation.h"

namespace tarvo::platform {

/// Starts operations as they become ready, in the order of their arrival, at most so many at a time. Operations run on
/// the shared pool. Dropping the queue does not cancel what it was given; only what waits in a suspended queue goes
/// with it, since nobody could resume that. An exception that leaves an operation is reported as a programming error,
/// and the operation counts as finished.
class OperationQueue {
public:
    explicit OperationQueue(std::string name = {});
    ~OperationQueue();

    /// 0 means no limit but the pool's.
    void setMaxConcurrentOperationCount(std::size_t count);
    void setSuspended(bool suspended);
    /// An operation goes to one queue, once; anything else is a programming error and is ignored.
    void addOperation(std::shared_ptr<Operation> operation);
    void addOperation(std::function<void()> block);
    /// Cancels everything that has not finished.
    void cancelAllOperations();
    /// Operations that have not finished.
    std::size_t operationCount() const;
    /// Runs the block once everything given before has finished; what is given later waits for it.
    void addBarrierBlock(std::function<void()> block);

private:
    std::shared_ptr<OperationQueueState> state_;
};

}  // namespace tarvo::platform
