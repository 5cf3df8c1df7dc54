#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/Object.h"

namespace tarvo::platform {

/// A piece of work with a state, for an `OperationQueue`. It becomes ready when every operation that it depends on
/// has finished, also by being cancelled. A synchronous operation finishes when `main` returns; an asynchronous one
/// (`isAsynchronous`) overrides `start` and tells the end itself through `notifyStateChanged`.
class Operation : public Object {
public:
    ~Operation() override;

    /// Begins the work on the calling thread. The base runs `main` unless cancelled, then finishes.
    virtual void start();
    virtual void main() {}
    virtual bool isAsynchronous() const { return false; }
    virtual bool isExecuting() const;
    virtual bool isFinished() const;

    /// A wish: `main` looks at `isCancelled` itself. An operation cancelled before its start never runs `main` and
    /// still finishes.
    virtual void cancel();
    bool isCancelled() const;

    /// Must be called before the operation is given to a queue. A cycle never becomes ready.
    void addDependency(std::shared_ptr<Operation> operation);
    std::vector<std::shared_ptr<Operation>> dependencies() const;
    bool isReady() const;

    /// Runs once, after the operation has finished, on the thread that finished it.
    void setCompletionBlock(std::function<void()> block);

protected:
    Operation();
    /// Told around each change of a key ("isExecuting", "isFinished") by classes that keep their own state.
    void willChangeValue(std::string_view key);
    void didChangeValue(std::string_view key);

private:
    friend class OperationQueue;
    struct State;
    std::unique_ptr<State> state_;
};

/// An operation made of a function.
class BlockOperation final : public Operation {
public:
    explicit BlockOperation(std::function<void()> block) : block_(std::move(block)) {}
    void main() override { block_(); }

private:
    std::function<void()> block_;
};

/// Starts operations as they become ready, in the order of their arrival, at most so many at a time. Operations run on
/// the shared pool. Dropping the queue does not cancel what it was given.
class OperationQueue {
public:
    explicit OperationQueue(std::string name = {});
    ~OperationQueue();

    /// 0 means no limit but the pool's.
    void setMaxConcurrentOperationCount(std::size_t count);
    void setSuspended(bool suspended);
    void addOperation(std::shared_ptr<Operation> operation);
    void addOperation(std::function<void()> block);
    /// Cancels everything that has not finished.
    void cancelAllOperations();
    std::size_t operationCount() const;
    /// Runs the block once everything given before has finished.
    void addBarrierBlock(std::function<void()> block);

private:
    struct State;
    std::shared_ptr<State> state_;
};

}  // namespace tarvo::platform
