#include <gmock/gmock.h>

#include <thread>

#include "platform/MainQueue.h"
#include "tests/platform/Support.h"

namespace tarvo::platform::testing {

using ::testing::ElementsAre;

class MainQueueTest : public ::testing::Test {
protected:
    std::shared_ptr<MainQueue> main = MainQueue::shared();
    Journal<int> journal;
    void TearDown() override { main->drain(); }
};

TEST_F(MainQueueTest, RunRunsItemsInOrderUntilStopped) {
    std::jthread sender([&] {
        for (int i = 0; i < 100; ++i) main->async([this, i] { journal.add(main->isCurrent() ? i : -1); });
        main->async([this] { main->stop(); });
        main->async([this] { journal.add(100); });
    });
    main->run();
    sender.join();
    ASSERT_EQ(journal.entries().size(), 100u);
    for (int i = 0; i < 100; ++i) EXPECT_EQ(journal.entries()[static_cast<std::size_t>(i)], i);
    EXPECT_EQ(main->drain(), 1u);
    EXPECT_FALSE(main->isCurrent());
}

TEST_F(MainQueueTest, DrainLeavesWhatItsItemsAdd) {
    main->async([this] {
        main->async([this] { journal.add(2); });
        journal.add(1);
    });
    EXPECT_EQ(main->drain(), 1u);
    EXPECT_THAT(journal.entries(), ElementsAre(1));
    EXPECT_EQ(main->drain(), 1u);
    EXPECT_EQ(main->drain(), 0u);
}

TEST_F(MainQueueTest, SyncFromAnotherThreadRunsOnTheMainThread) {
    main->drain();
    std::thread::id ranOn;
    bool caught = false;
    std::atomic<bool> done = false;
    std::jthread other([&] {
        ranOn = main->sync([] { return std::this_thread::get_id(); });
        try {
            main->sync([] { throw std::runtime_error("x"); });
        } catch (const std::runtime_error&) {
            caught = true;
        }
        done = true;
    });
    EXPECT_TRUE(main->runUntil([&] { return done.load(); }, forever));
    EXPECT_EQ(ranOn, std::this_thread::get_id());
    EXPECT_TRUE(caught);
}

TEST_F(MainQueueTest, SyncByTheMainThreadRunsAtOnceBetweenItemsAndIsAnErrorInsideOne) {
    main->drain();
    CaughtErrors errors;
    EXPECT_EQ(main->sync([&] { return main->isCurrent() ? 1 : 0; }), 1);
    EXPECT_EQ(errors.count(), 0u);
    main->async([this] { main->sync([this] { journal.add(1); }); });
    main->drain();
    EXPECT_THAT(journal.entries(), ElementsAre(1));
    EXPECT_EQ(errors.count(), 1u);
}

TEST_F(MainQueueTest, ACycleThroughTheMainThreadIsReported) {
    for (int round = 0; round < 50; ++round) {
        CaughtErrors errors;
        auto queue = DispatchQueue::serial("held");
        std::latch bothHold(2);
        std::atomic<int> through = 0;
        queue->async([&] {
            bothHold.arrive_and_wait();
            main->sync([&] { ++through; });
        });
        main->async([&] {
            bothHold.arrive_and_wait();
            queue->sync([&] { ++through; });
        });
        ASSERT_TRUE(main->runUntil([&] { return through == 2; }, forever));
        ASSERT_TRUE(WorkerPool::waitUntilIdle(forever));
        EXPECT_EQ(errors.count(), 1u);
        main->drain();
    }
}

TEST_F(MainQueueTest, APosterGetsWhatWaitedAndWhatComes) {
    Journal<Work> posted;
    std::atomic<bool> done = false;
    main->async([this] { journal.add(main->isCurrent() ? 1 : -1); });
    main->setPoster([&](Work work) { posted.add(std::move(work)); });
    main->async([this] { journal.add(main->isCurrent() ? 2 : -2); });
    std::jthread other([&] {
        main->sync([this] { journal.add(main->isCurrent() ? 3 : -3); });
        main->async([] { throw 1; });
        main->async([&] { done = true; });
    });
    CaughtErrors errors;
    // The test's thread is the host's event loop.
    for (std::size_t next = 0; !done; std::this_thread::yield())
        if (auto all = posted.entries(); next < all.size()) all[next++]();
    other.join();
    main->setPoster({});
    EXPECT_THAT(journal.entries(), ElementsAre(1, 2, 3));
    EXPECT_EQ(errors.count(), 1u);
}

}  // namespace tarvo::platform::testing
