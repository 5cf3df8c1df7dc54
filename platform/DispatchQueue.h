#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

#include "platform/FunctionRef.h"

namespace tarvo::platform {

using Work = std::function<void()>;
class QueueState;

/// A handle on work that is to run later. Copies refer to the same work; dropping all of them does not cancel it.
class Timer {
public:
    Timer() = default;
    /// Cancels the work. Returns true if it had not begun, and then it never will; false if it has begun, has
    /// run, or was cancelled before. Never waits.
    bool cancel();
    /// Whether the work is still to come.
    bool isPending() const;

    struct State;
    explicit Timer(std::shared_ptr<State> state) : state_(std::move(state)) {}

private:
    std::shared_ptr<State> state_;
};

/// A queue of work. A serial queue runs one item at a time in the order of arrival; a concurrent queue runs items side
/// by side, and a barrier item alone, after everything before it and before everything that follows it. All queues
/// share one pool of threads, which grows up to a cap while work blocks. No exception may leave an item: it is reported
/// as a programming error and the queue goes on.
///
/// `sync` runs its work on the caller's thread once the queue's turn has come, at once when the queue is idle. A
/// `sync` that could never get its turn, because this thread holds the queue already (itself, or through a chain of
/// queues and threads that wait for each other), is reported as a programming error; the work then runs in place.
class DispatchQueue : public std::enable_shared_from_this<DispatchQueue> {
public:
    /// `background` items yield the processor to `standard` ones of other queues when both wait for a thread.
    enum class Quality { standard, background };

    static std::shared_ptr<DispatchQueue> serial(std::string label, Quality quality = Quality::standard);
    static std::shared_ptr<DispatchQueue> concurrent(std::string label, Quality quality = Quality::standard);
    virtual ~DispatchQueue();

    const std::string& label() const { return label_; }

    /// Runs the work later, on a thread of the pool. The queue stays alive until its items have run.
    virtual void async(Work work);
    virtual void asyncBarrier(Work work);
    /// Runs the work on this queue once the delay has passed on `Clock::steadyNow`. A cancelled timer never fires.
    Timer asyncAfter(std::chrono::milliseconds delay, Work work);

    /// Runs `function` now, on this thread, in the queue's order, and gives its result. An exception of `function`
    /// passes through to the caller.
    template <class F>
    std::invoke_result_t<F> sync(F&& function) {
        return inTurn(false, std::forward<F>(function));
    }
    template <class F>
    std::invoke_result_t<F> syncBarrier(F&& function) {
        return inTurn(true, std::forward<F>(function));
    }

    /// Whether the calling thread is running an item of this queue, directly or beneath a `sync` from it.
    bool isCurrent() const;
    /// Whether the calling thread is running any item of the pool or of a `sync`.
    static bool onAnyQueue();

    /// Reports a programming error when the calling thread does not hold this queue.
    void assertCurrent() const;

protected:
    explicit DispatchQueue(std::string label, bool concurrent, Quality quality);
    virtual void syncImpl(bool barrier, FunctionRef<void()> work);

private:
    template <class F>
    std::invoke_result_t<F> inTurn(bool barrier, F&& function) {
        if constexpr (std::is_void_v<std::invoke_result_t<F>>) {
            syncImpl(barrier, [&] { function(); });
        } else {
            std::optional<std::invoke_result_t<F>> result;
            syncImpl(barrier, [&] { result.emplace(function()); });
            return std::move(*result);
        }
    }

    friend class MainQueue;
    std::string label_;
    // Shared with the pool, which keeps it until the queue's items have run.
    std::shared_ptr<QueueState> state_;
};

/// Marks a stretch of code of a pool thread that waits for something outside (a lock of long standing, a file, a
/// process), so that the pool lets another thread in meanwhile. `sync` needs none.
class BlockingScope {
public:
    BlockingScope();
    ~BlockingScope();
    BlockingScope(const BlockingScope&) = delete;
    BlockingScope& operator=(const BlockingScope&) = delete;
};

/// The pool behind all queues.
class WorkerPool {
public:
    /// Waits until no queue has an item waiting or running and no timer is due, for at most this long. Returns true if
    /// that was reached. For shutting down and for tests; never from an item. The main queue does not count: whoever
    /// drives it drains it.
    static bool waitUntilIdle(std::chrono::milliseconds atMost);
    /// Drops every timer that has not fired. Part of shutting down.
    static void cancelAllTimers();
    /// Threads at present, and the most that there can be.
    static std::size_t threadCount();
    static constexpr std::size_t maximumThreads = 64;
};

}  // namespace tarvo::platform

namespace tarvo {
using platform::DispatchQueue;
}  // namespace tarvo
