#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Object.h"

namespace tarvo::platform {

class OperationQueueState;

/// A piece of work with a state, for an `OperationQueue`. It becomes ready when every operation that it depends on
/// has finished, also by being cancelled. A synchronous operation finishes when `main` returns; an asynchronous one
/// (`isAsynchronous`) overrides `start`, keeps "executing" and "finished" itself behind `isExecuting` and `isFinished`,
/// and reports each change through `willChangeValue` and `didChangeValue`, with no lock of its own held.
///
/// Safe from any thread. A finished operation lets go of its dependencies and its completion block.
class Operation : public Object {
public:
    ~Operation() override;

    /// Begins the work on the calling thread. The base runs `main` unless cancelled, then finishes.
    virtual void start();
    virtual void main() {}
    virtual bool isAsynchronous() const { return false; }
    virtual bool isExecuting() const;
    virtual bool isFinished() const;

    /// Asks the operation to stop: `main` looks at `isCancelled` itself. An operation cancelled before its start never
    /// runs `main` and still finishes; a queue starts it for that without waiting for its dependencies. No effect once
    /// it has finished.
    virtual void cancel();
    bool isCancelled() const;

    /// Must be called before the operation is given to a queue. A cycle never becomes ready.
    void addDependency(std::shared_ptr<Operation> operation);
    std::vector<std::shared_ptr<Operation>> dependencies() const;
    /// Whether a queue may start it: every dependency has reported its end, or this one is cancelled.
    bool isReady() const;

    /// Runs once, after the operation has finished, on the thread that finished it; at once, on this thread, when it
    /// has finished already.
    void setCompletionBlock(std::function<void()> block);

protected:
    Operation();
    /// Called around each change of a key ("isExecuting", "isFinished") by classes that keep their own state. After the
    /// change of "isFinished" the base asks `isFinished` and, when it holds, notifies the queue and the operations that
    /// wait.
    void willChangeValue(std::string_view key);
    void didChangeValue(std::string_view key);

private:
    friend class OperationQueueState;
    struct State;
    void finishAnyway();
    void announceFinished();
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

}  // namespace tarvo::platform
