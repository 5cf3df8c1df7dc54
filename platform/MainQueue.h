#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <utility>

#include "platform/DispatchQueue.h"

namespace tarvo::platform {

/// The queue of the host's user interface: answers to callers run here, one at a time, in the order of arrival.
/// A host either lends a thread with `run`, or hands in a poster that puts an item into its own event loop.
class MainQueue final : public DispatchQueue {
public:
    using Poster = std::function<void(Work)>;

    /// The main queue of the process.
    static const std::shared_ptr<MainQueue>& shared();

    /// From now on every item goes to the poster, which must run each of them exactly once, in order, on one thread.
    /// Items that waited are handed over at once. An empty poster goes back to `run`. Set once, before the first use.
    /// The poster is called from any thread, several at a time, and must not run the item before it returns.
    void setPoster(Poster poster);

    /// Runs items on the calling thread until `stop` is called; then returns after the item under way.
    void run();
    /// Runs items until the condition holds, looking after each item and every few milliseconds; false when the time
    /// (the system's, also while `Clock` is set by hand) has passed without it. Only one thread may run items at a
    /// time, and no item may: `run`, `runUntil` and `drain` report a programming error then and return at once.
    bool runUntil(const std::function<bool()>& condition, std::chrono::milliseconds atMost);
    /// Runs what waits now and returns without waiting for more. Returns how many items ran.
    std::size_t drain();
    /// Ends `run`, or the next `run` when none is under way.
    void stop();

    // `sync` from another thread waits until the main thread has run the work. The main thread is the one that runs
    // items or ran the last one: between two items its own `sync` runs at once, inside an item it is a programming
    // error. A thread that has run none yet is like any other: its `sync` waits for somebody to drive the queue, so a
    // thread that is about to call `run` must not `sync` before.
    void async(Work work) override;
    void asyncBarrier(Work work) override { async(std::move(work)); }

protected:
    void syncImpl(bool barrier, FunctionRef<void()> work) override;

private:
    MainQueue();
    bool isMainThread() const;
    Work forPoster(Work work);
    template <class Loop>
    auto drive(Loop loop) -> decltype(loop());
    bool beginDriving();
    void endDriving();
    bool runOne();

    struct MainState;
    std::unique_ptr<MainState> main_;
};

}  // namespace tarvo::platform

namespace tarvo {
using platform::MainQueue;
}
