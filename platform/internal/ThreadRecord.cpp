#include "platform/internal/ThreadRecord.h"

#include <memory>
#include <mutex>
#include <vector>

namespace tarvo::platform {

namespace {

// Lives as long as the process, since threads may end after the statics are gone.
struct RecordStore {
    std::mutex mutex;
    std::vector<std::unique_ptr<ThreadRecord>> all;
    std::vector<ThreadRecord*> free;
    std::uint64_t threadsSoFar = 0;

    static RecordStore& shared() {
        static auto* store = new RecordStore;
        return *store;
    }

    ThreadRecord* take() {
        std::lock_guard lock(mutex);
        if (free.empty()) free.push_back(all.emplace_back(std::make_unique<ThreadRecord>()).get());
        auto* record = free.back();
        free.pop_back();
        record->number = ++threadsSoFar;
        return record;
    }

    void giveBack(ThreadRecord* record) {
        std::lock_guard lock(mutex);
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
