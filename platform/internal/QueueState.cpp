#include "platform/internal/QueueState.h"

#include <algorithm>
#include <new>
#include <typeinfo>

#include "platform/Log.h"
#include "platform/ProgrammingError.h"
#include "platform/internal/Workers.h"

namespace tarvo::platform {

namespace {

// A serial queue goes back behind the other queues after so many items, so that a long line cannot keep a thread.
constexpr int batchSize = 32;

// The message of an exception may quote a record, so only its type is reported.
void reportEscaped(const std::string& label, std::string_view type) {
    reportProgrammingError("An exception (" + std::string(type) + ") left a work item of the queue \"" + label + "\"");
}

void reportDeadlock(const std::string& label) {
    reportProgrammingError("sync on the queue \"" + label +
                           "\" from work that the queue waits for would never return; the work runs in place");
}

}  // namespace

QueueState::QueueState(std::string label, bool concurrent, DispatchQueue::Quality quality)
    : label_(std::move(label)), concurrent_(concurrent), quality_(quality) {}

void QueueState::async(Work work, bool barrier) {
    Workers::shared().itemAdded();
    MutexLock lock(mutex_);
    line_.push_back({std::move(work), nullptr, barrier || !concurrent_});
    admit();
}

void QueueState::start(bool exclusive) {
    if (exclusive)
        exclusive_ = true;
    else
        ++sharing_;
}

void QueueState::admit() {
    while (!line_.empty() && canStart(line_.front().exclusive)) {
        auto& next = line_.front();
        start(next.exclusive);
        if (next.waiter) {
            holders_.push_back(&next.waiter->thread);
            next.waiter->granted = true;
            next.waiter->thread.granted.notifyOne();
        } else {
            Workers::shared().submit({shared_from_this(), std::move(next.work), next.exclusive});
        }
        line_.pop_front();
    }
}

void QueueState::leave(bool exclusive) {
    MutexLock lock(mutex_);
    holders_.erase(std::find(holders_.begin(), holders_.end(), &ThreadRecord::current()));
    if (exclusive)
        exclusive_ = false;
    else
        --sharing_;
    admit();
}

void QueueState::runItem(Work work) {
    try {
        work();
    } catch (const std::bad_alloc&) {
        log(LogLevel::error, "queues", "Memory ran out in a work item of the queue \"" + label_ + "\"");
    } catch (const std::exception& error) {
        reportEscaped(label_, typeid(error).name());
    } catch (...) {
        reportEscaped(label_, "of a foreign type");
    }
    // Here the item lets go of what it captured: still in the queue's turn, under no lock.
}

bool QueueState::nextOfBatch(Work& work) {
    MutexLock lock(mutex_);
    if (line_.empty() || line_.front().waiter || !line_.front().exclusive) return false;
    work = std::move(line_.front().work);
    line_.pop_front();
    return true;
}

void QueueState::runAdmitted(Work work, bool exclusive) {
    {
        MutexLock lock(mutex_);
        holders_.push_back(&ThreadRecord::current());
    }
    int finished = 0;
    {
        HoldScope hold(*this, exclusive);
        do {
            runItem(std::move(work));
            ++finished;
        } while (exclusive && finished < batchSize && nextOfBatch(work));
    }
    leave(exclusive);
    Workers::shared().itemsDone(finished);
}

void QueueState::runForeign(Work work) {
    {
        MutexLock lock(mutex_);
        holders_.push_back(&ThreadRecord::current());
        exclusive_ = true;
    }
    {
        HoldScope hold(*this, true);
        runItem(std::move(work));
    }
    leave(true);
}

void QueueState::sync(bool barrier, FunctionRef<void()> work) {
    bool exclusive = barrier || !concurrent_;
    if (auto held = ThreadRecord::current().find(*this)) {
        // A read inside a read of the same queue has its turn already. It must not line up: a barrier that waits for
        // the outer read would stand in front of it, and both would wait for ever.
        if (exclusive || held->exclusive) reportDeadlock(label_);
        work();
        return;
    }
    if (!enter(exclusive)) {
        reportDeadlock(label_);
        work();
        return;
    }
    struct Turn {
        QueueState& queue;
        bool exclusive;
        ~Turn() { queue.leave(exclusive); }
    } turn{*this, exclusive};
    HoldScope hold(*this, exclusive);
    work();
}

bool QueueState::enter(bool exclusive) {
    Waiter waiter{*this, ThreadRecord::current()};
    {
        MutexLock lock(mutex_);
        if (line_.empty() && canStart(exclusive)) {
            start(exclusive);
            holders_.push_back(&waiter.thread);
            return true;
        }
        line_.push_back({{}, &waiter, exclusive});
    }
    return awaitTurn(waiter);
}

bool QueueState::awaitTurn(Waiter& waiter) {
    if (!WaitGraph::enter(waiter)) {
        withdraw(waiter);
        return false;
    }
    awaitGrant(waiter);
    WaitGraph::leave(waiter);
    return true;
}

void QueueState::withdraw(const Waiter& waiter) {
    MutexLock lock(mutex_);
    std::erase_if(line_, [&](const Entry& entry) { return entry.waiter == &waiter; });
    admit();
}

void QueueState::appendHolders(std::vector<ThreadRecord*>& holders) const {
    MutexLock lock(mutex_);
    holders.insert(holders.end(), holders_.begin(), holders_.end());
}

bool QueueState::isWaiting(const Waiter& waiter) const {
    MutexLock lock(mutex_);
    return !waiter.granted;
}

void QueueState::awaitGrant(Waiter& waiter) {
    MutexLock lock(mutex_);
    if (waiter.granted) return;
    BlockingScope blocking;
    waiter.thread.granted.wait(lock, [&] { return waiter.granted; });
}

void QueueState::finish(Waiter& waiter) {
    MutexLock lock(mutex_);
    waiter.granted = true;
    waiter.thread.granted.notifyOne();
}

}  // namespace tarvo::platform
