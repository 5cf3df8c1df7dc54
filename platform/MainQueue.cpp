#include "platform/MainQueue.h"

#include <algorithm>
#include <atomic>
#include <deque>
#include <exception>
#include <utility>

#include "platform/DispatchQueue.h"
#include "platform/ProgrammingError.h"
#include "platform/ThreadSafety.h"
#include "platform/internal/QueueState.h"

namespace tarvo::platform {

namespace {

// How often `runUntil` looks at its condition while no item comes: another thread may have made it true.
constexpr std::chrono::milliseconds lookInterval(5);

}  // namespace

struct MainQueue::MainState {
    Mutex mutex;
    Condition changed;
    std::deque<Work> items TARVO_GUARDED_BY(mutex);
    bool stopped TARVO_GUARDED_BY(mutex) = false;
    // Number of the thread that runs items at present, or that ran the last one; 0 before the first.
    std::uint64_t mainThread TARVO_GUARDED_BY(mutex) = 0;
    bool driven TARVO_GUARDED_BY(mutex) = false;
    std::shared_ptr<const Poster> poster TARVO_GUARDED_BY(mutex);
};

MainQueue::MainQueue() : DispatchQueue("main", false, Quality::standard), main_(std::make_unique<MainState>()) {}

const std::shared_ptr<MainQueue>& MainQueue::shared() {
    // Never destroyed: threads of the pool may post while the process ends.
    static auto* queue = new std::shared_ptr<MainQueue>(new MainQueue);
    return *queue;
}

Work MainQueue::forPoster(Work work) {
    return [this, work = std::move(work)]() mutable {
        {
            MutexLock lock(main_->mutex);
            main_->mainThread = ThreadRecord::current().number;
        }
        state_->runForeign(std::move(work));
    };
}

void MainQueue::setPoster(Poster poster) {
    auto shared = poster ? std::make_shared<const Poster>(std::move(poster)) : nullptr;
    // New items go on lining up here until those before them have been handed over, so that the order stands.
    for (;;) {
        std::deque<Work> waiting;
        {
            MutexLock lock(main_->mutex);
            if (shared) waiting.swap(main_->items);
            if (waiting.empty()) {
                main_->poster = shared;
                return;
            }
        }
        for (auto& work : waiting) (*shared)(forPoster(std::move(work)));
    }
}

void MainQueue::async(Work work) {
    std::shared_ptr<const Poster> poster;
    {
        MutexLock lock(main_->mutex);
        poster = main_->poster;
        if (!poster) main_->items.push_back(std::move(work));
    }
    if (poster)
        (*poster)(forPoster(std::move(work)));
    else
        main_->changed.notifyAll();
}

bool MainQueue::beginDriving() {
    MutexLock lock(main_->mutex);
    if (main_->driven) return false;
    main_->driven = true;
    main_->mainThread = ThreadRecord::current().number;
    return true;
}

void MainQueue::endDriving() {
    MutexLock lock(main_->mutex);
    main_->driven = false;
}

template <class Loop>
auto MainQueue::drive(Loop loop) -> decltype(loop()) {
    if (!beginDriving()) {
        reportProgrammingError("The main queue is being run already; only one thread may run it, and no item of it");
        return {};
    }
    struct End {
        MainQueue& queue;
        ~End() { queue.endDriving(); }
    } end{*this};
    return loop();
}

bool MainQueue::runOne() {
    Work work;
    {
        MutexLock lock(main_->mutex);
        if (main_->items.empty()) return false;
        work = std::move(main_->items.front());
        main_->items.pop_front();
    }
    state_->runForeign(std::move(work));
    return true;
}

void MainQueue::run() {
    drive([this] {
        for (;;) {
            {
                MutexLock lock(main_->mutex);
                main_->changed.wait(lock, [this] {
                    main_->mutex.assumeHeld();
                    return main_->stopped || !main_->items.empty();
                });
                if (std::exchange(main_->stopped, false)) return true;
            }
            runOne();
        }
    });
}

bool MainQueue::runUntil(const std::function<bool()>& condition, std::chrono::milliseconds atMost) {
    auto deadline = std::chrono::steady_clock::now() + atMost;
    return drive([&] {
        while (!condition()) {
            if (std::chrono::steady_clock::now() >= deadline) return false;
            if (runOne()) continue;
            MutexLock lock(main_->mutex);
            auto until = std::min(deadline, std::chrono::steady_clock::now() + lookInterval);
            main_->changed.waitUntil(lock, until, [this] {
                main_->mutex.assumeHeld();
                return !main_->items.empty();
            });
        }
        return true;
    });
}

std::size_t MainQueue::drain() {
    return drive([this] {
        std::size_t waiting;
        {
            MutexLock lock(main_->mutex);
            waiting = main_->items.size();
        }
        std::size_t ran = 0;
        while (ran < waiting && runOne()) ++ran;
        return ran;
    });
}

void MainQueue::stop() {
    {
        MutexLock lock(main_->mutex);
        main_->stopped = true;
    }
    main_->changed.notifyAll();
}

bool MainQueue::isMainThread() const {
    MutexLock lock(main_->mutex);
    return main_->mainThread == ThreadRecord::current().number;
}

void MainQueue::syncImpl(bool barrier, FunctionRef<void()> work) {
    // The thread of the queue between two items, or inside one: the base takes the turn or reports.
    if (isCurrent() || isMainThread()) return DispatchQueue::syncImpl(barrier, work);

    Waiter waiter{*state_, ThreadRecord::current()};
    std::exception_ptr failure;
    auto claimed = std::make_shared<std::atomic<bool>>(false);
    async([&, claimed, state = state_] {
        if (claimed->exchange(true)) return;
        try {
            work();
        } catch (...) {
            failure = std::current_exception();
        }
        state->finish(waiter);
    });
    if (!WaitGraph::enter(waiter)) {
        if (!claimed->exchange(true)) {
            reportProgrammingError(
                "sync on the main queue from work that the main thread waits for; the work runs in place");
            work();
            return;
        }
        state_->awaitGrant(waiter);
    } else {
        state_->awaitGrant(waiter);
        WaitGraph::leave(waiter);
    }
    if (failure) std::rethrow_exception(failure);
}

}  // namespace tarvo::platform
