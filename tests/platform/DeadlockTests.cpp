#include <gmock/gmock.h>

#include <functional>
#include <thread>

#include "tests/platform/Support.h"
#include "tests/support/OnThreads.h"

namespace tarvo::platform::testing {

using ::testing::HasSubstr;

TEST(Deadlock, OnOneThreadIsReportedAndTheWorkRunsInPlace) {
    auto a = DispatchQueue::serial("a");
    auto b = DispatchQueue::serial("b");
    auto c = DispatchQueue::concurrent("c");
    using Inner = const std::function<void()>&;
    struct Case {
        const char* name;
        const char* queue;
        std::function<void(Inner)> nest;
    };
    const Case cases[] = {
        {"serial in itself", "a", [&](Inner work) { a->sync([&] { a->sync(work); }); }},
        {"through another queue", "a", [&](Inner work) { a->sync([&] { b->sync([&] { a->sync(work); }); }); }},
        {"write in a read", "c", [&](Inner work) { c->sync([&] { c->syncBarrier(work); }); }},
        {"read in a write", "c", [&](Inner work) { c->syncBarrier([&] { c->sync(work); }); }},
        {"write in a write", "c", [&](Inner work) { c->syncBarrier([&] { c->syncBarrier(work); }); }},
        {"write in a read through another", "c",
         [&](Inner work) { c->sync([&] { b->sync([&] { c->syncBarrier(work); }); }); }},
    };
    for (auto& each : cases) {
        SCOPED_TRACE(each.name);
        CaughtErrors errors;
        int ran = 0;
        each.nest([&] { ++ran; });
        EXPECT_EQ(ran, 1);
        ASSERT_EQ(errors.count(), 1u);
        EXPECT_THAT(errors.told()[0], HasSubstr(std::string("\"") + each.queue + "\""));
    }
    // Nothing of it has left a queue taken.
    for (auto& queue : {a, b, c}) EXPECT_EQ(queue->syncBarrier([] { return 1; }), 1);
}

// Threads that each hold one queue and then want the next one's.
class Ring {
public:
    explicit Ring(std::vector<std::shared_ptr<DispatchQueue>> queues) : queues_(std::move(queues)) {}

    void close(bool barriers) {
        std::latch allHold(static_cast<std::ptrdiff_t>(queues_.size()));
        for (std::size_t i = 0; i < queues_.size(); ++i)
            queues_[i]->async([&, i] {
                allHold.arrive_and_wait();
                auto& next = queues_[(i + 1) % queues_.size()];
                auto work = [this] { ++through_; };
                barriers ? next->syncBarrier(work) : next->sync(work);
            });
        ASSERT_TRUE(WorkerPool::waitUntilIdle(forever));
    }
    int through() const { return through_; }

private:
    std::vector<std::shared_ptr<DispatchQueue>> queues_;
    std::atomic<int> through_ = 0;
};

TEST(Deadlock, ACycleOfThreadsIsReportedOnceAndEverybodyGetsThrough) {
    auto serial = [] { return DispatchQueue::serial("serial"); };
    auto concurrent = [] { return DispatchQueue::concurrent("concurrent"); };
    for (int round = 0; round < 30; ++round) {
        for (auto& queues : std::vector<std::vector<std::shared_ptr<DispatchQueue>>>{
                 {serial(), serial()}, {serial(), serial(), serial()}, {concurrent(), serial(), concurrent()}}) {
            CaughtErrors errors;
            Ring ring(queues);
            ring.close(true);
            EXPECT_EQ(errors.count(), 1u);
            EXPECT_EQ(ring.through(), static_cast<int>(queues.size()));
        }
    }
}

TEST(Deadlock, ARingOfReadersIsNone) {
    CaughtErrors errors;
    Ring ring({DispatchQueue::concurrent("x"), DispatchQueue::concurrent("y")});
    ring.close(false);
    EXPECT_EQ(errors.count(), 0u);
    EXPECT_EQ(ring.through(), 2);
}

// Many threads, many queues, taken in one order: lots of waiting, never a cycle.
TEST(Deadlock, WaitingInAFixedOrderIsNeverTakenForOne) {
    CaughtErrors errors;
    std::vector<std::shared_ptr<DispatchQueue>> queues;
    for (int i = 0; i < 4; ++i) queues.push_back(i % 2 ? DispatchQueue::serial("s") : DispatchQueue::concurrent("c"));
    std::atomic<int> through = 0;
    onThreads(6, [&](int t) {
        for (int i = 0; i < 300; ++i) {
            auto& outer = queues[static_cast<std::size_t>(t + i) % 3];
            auto work = [&] { queues[3]->sync([&] { ++through; }); };
            i % 3 ? outer->sync(work) : outer->syncBarrier(work);
        }
    });
    EXPECT_EQ(through, 6 * 300);
    EXPECT_EQ(errors.count(), 0u);
}

}  // namespace tarvo::platform::testing
