#include "platform/internal/ThreadRecord.h"

#include <memory>
#include <vector>

#include "platform/ThreadSafety.h"

namespace tarvo::platform {

namespace {

// Lives as long as the process, since threads may end after the statics are gone.
struct RecordStore {
    Mutex mutex;
    std::vector<std::unique_ptr<ThreadRecord>> all TARVO_GUARDED_BY(mutex);
    std::vector<ThreadRecord*> free TARVO_GUARDED_BY(mutex);
    std::uint64_t threadsSoFar TARVO_GUARDED_BY(mutex) = 0;

    static RecordStore& shared() {
        static auto* store = new RecordStore;
        return *store;
    }

    ThreadRecord* take() {
        MutexLock lock(mutex);
        if (free.empty()) free.push_back(all.emplace_back(std::make_unique<ThreadRecord>()).get());
        auto* record = free.back();
        free.pop_back();
        record->number = ++threadsSoFar;
        return record;
    }

    void giveBack(ThreadRecord* record) {
        MutexLock lock(mutex);
        record->isWorker = false;
        free.push_back(record);
    }
};

struct RecordOfThread {
    ThreadRecord* record = RecordStore::shared().take();
    ~RecordOfThread() { RecordStore::shared().giveBack(record); }
};

}  // namespace

ThreadRecord& ThreadRecord::current() {
    thread_local RecordOfThread own;
    return *own.record;
}

const HeldQueue* ThreadRecord::find(const QueueState& queue) const {
    auto held = innermost;
    while (held && held->queue != &queue) held = held->outer;
    return held;
}

HoldScope::HoldScope(const QueueState& queue, bool exclusive)
    : thread_(ThreadRecord::current()), held_{&queue, exclusive, thread_.innermost} {
    thread_.innermost = &held_;
}

HoldScope::~HoldScope() { thread_.innermost = held_.outer; }

}  // namespace tarvo::platform
