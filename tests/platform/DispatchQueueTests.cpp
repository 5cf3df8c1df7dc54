#include "platform/DispatchQueue.h"

#include <gmock/gmock.h>

#include <thread>

#include "tests/platform/Support.h"
#include "tests/support/OnThreads.h"

namespace tarvo::platform::testing {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

TEST(SerialQueue, KeepsTheOrderOfEachSenderAndRunsOneItemAtATime) {
    constexpr int senders = 4, each = 2500;
    auto queue = DispatchQueue::serial("serial");
    std::vector<std::pair<int, int>> ran;  // guarded by the queue alone: the sanitizers watch
    onThreads(senders, [&](int sender) {
        for (int i = 0; i < each; ++i) {
            auto note = [&ran, sender, i] { ran.emplace_back(sender, i); };
            i % 100 == 99 ? queue->sync(note) : queue->async(note);
        }
    });
    auto result = queue->sync([&] { return ran; });
    ASSERT_EQ(result.size(), std::size_t(senders * each));
    std::vector<int> next(senders, 0);
    for (auto [sender, i] : result) EXPECT_EQ(i, next[static_cast<std::size_t>(sender)]++);
}

TEST(Pool, BlockedItemsNeverKeepOthersFromRunning) {
    auto blockers = 3 * std::max(2u, std::thread::hardware_concurrency());
    for (bool told : {false, true}) {
        std::latch gate(1);
        auto waiting = DispatchQueue::concurrent("waiting");
        for (unsigned i = 0; i < blockers; ++i)
            waiting->async([&, told] {
                std::optional<BlockingScope> scope;
                if (told) scope.emplace();
                gate.wait();
            });
        // The pool has to find a thread for this one, or nothing here ever ends.
        DispatchQueue::serial("opener")->async([&] { gate.count_down(); });
        ASSERT_TRUE(WorkerPool::waitUntilIdle(forever)) << "told: " << told;
    }
    EXPECT_LE(WorkerPool::threadCount(), WorkerPool::maximumThreads);
}

TEST(Pool, AThreadThatWaitsInSyncIsReplaced) {
    auto held = DispatchQueue::serial("held");
    std::latch holding(1), gate(1);
    held->async([&] {
        holding.count_down();
        gate.wait();
    });
    holding.wait();
    std::atomic<int> through = 0;
    for (int i = 0; i < 8; ++i) DispatchQueue::serial("waits")->async([&] { held->sync([&] { ++through; }); });
    DispatchQueue::serial("opener")->async([&] { gate.count_down(); });
    ASSERT_TRUE(WorkerPool::waitUntilIdle(forever));
    EXPECT_EQ(through, 8);
}

TEST(Sync, LetsAnExceptionThroughAndFreesTheQueue) {
    auto queue = DispatchQueue::serial("s");
    EXPECT_THROW(queue->sync([] { throw std::runtime_error("x"); }), std::runtime_error);
    EXPECT_FALSE(queue->isCurrent());
    EXPECT_EQ(queue->sync([] { return 7; }), 7);
}

TEST(Items, AnExceptionIsReportedWithoutItsTextAndTheQueueGoesOn) {
    CaughtErrors errors;
    auto queue = DispatchQueue::serial("faulty");
    queue->async([] { throw std::runtime_error("secret of a record"); });
    queue->async([] { throw 5; });
    queue->async([] { throw std::bad_alloc(); });  // nobody's error
    queue->async(nullptr);
    EXPECT_EQ(queue->sync([] { return 1; }), 1);
    ASSERT_EQ(errors.count(), 3u);
    for (auto& text : errors.told()) {
        EXPECT_THAT(text, HasSubstr("\"faulty\""));
        EXPECT_THAT(text, Not(HasSubstr("secret")));
    }
}

TEST(Items, WhatAnItemCapturedMayUseItsQueueWhenItGoes) {
    struct Parting {
        std::shared_ptr<DispatchQueue> queue;
        std::latch& gone;
        ~Parting() {
            queue->async([&gone = gone] { gone.count_down(); });
        }
    };
    std::latch gone(1);
    auto queue = DispatchQueue::serial("parting");
    auto parting = std::shared_ptr<Parting>(new Parting{queue, gone});
    queue->async([parting = std::move(parting)] {});
    queue.reset();
    gone.wait();
    EXPECT_TRUE(WorkerPool::waitUntilIdle(forever));
}

TEST(ConcurrentQueue, ABarrierRunsAlone) {
    auto queue = DispatchQueue::concurrent("shared");
    std::atomic<int> reading = 0, doneBefore = 0, faults = 0;
    int written = 0;  // written by barriers alone
    auto read = [&](int expected) {
        ++reading;
        if (written != expected) ++faults;
        ++doneBefore;
        --reading;
    };
    constexpr int rounds = 50, readers = 8;
    for (int round = 0; round < rounds; ++round) {
        for (int i = 0; i < readers; ++i) queue->async([&, round] { read(round); });
        auto write = [&, round] {
            if (reading != 0 || doneBefore != (round + 1) * readers) ++faults;
            ++written;
        };
        round % 2 ? queue->asyncBarrier(write) : queue->syncBarrier(write);
    }
    EXPECT_EQ(queue->sync([&] { return written; }), rounds);
    EXPECT_EQ(faults, 0);
}

TEST(ConcurrentQueue, ReadersRunSideBySide) {
    auto queue = DispatchQueue::concurrent("shared");
    std::latch together(3);
    for (int i = 0; i < 2; ++i) queue->async([&] { together.arrive_and_wait(); });
    queue->sync([&] { together.arrive_and_wait(); });
    ASSERT_TRUE(WorkerPool::waitUntilIdle(forever));
}

TEST(ConcurrentQueue, ReadersBehindAWaitingBarrierWaitButANestedReadPasses) {
    CaughtErrors errors;
    auto queue = DispatchQueue::concurrent("shared");
    Journal<std::string> journal;
    queue->sync([&] {
        queue->asyncBarrier([&] { journal.add("barrier"); });
        queue->async([&] { journal.add("later"); });
        queue->sync([&] { journal.add("nested"); });
    });
    ASSERT_TRUE(WorkerPool::waitUntilIdle(forever));
    EXPECT_THAT(journal.entries(), ElementsAre("nested", "barrier", "later"));
    EXPECT_EQ(errors.count(), 0u);
}

}  // namespace tarvo::platform::testing
