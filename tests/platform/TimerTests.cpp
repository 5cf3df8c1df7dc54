#include <gmock/gmock.h>

#include <thread>

#include "platform/Clock.h"
#include "tests/platform/Support.h"

namespace tarvo::platform::testing {

using ::testing::ElementsAre;

TEST(Timer, FiresOnItsQueueWithoutAHolder) {
    auto queue = DispatchQueue::serial("timed");
    std::latch fired(1);
    bool onQueue = false;
    queue->asyncAfter(1ms, [&, weak = std::weak_ptr(queue)] {
        auto strong = weak.lock();
        onQueue = strong && strong->isCurrent();
        fired.count_down();
    });
    fired.wait();
    ASSERT_TRUE(WorkerPool::waitUntilIdle(forever));
    EXPECT_TRUE(onQueue);
}

TEST(Timer, CancelAndFireNeverBothHappen) {
    auto queue = DispatchQueue::serial("timed");
    std::atomic<int> fired = 0;
    int cancelled = 0;
    constexpr int rounds = 2000;
    for (int i = 0; i < rounds; ++i) {
        auto timer = queue->asyncAfter(0ms, [&] { ++fired; });
        if (i % 3 == 0) std::this_thread::yield();
        bool first = timer.cancel();
        cancelled += first;
        EXPECT_FALSE(timer.cancel());
        EXPECT_FALSE(timer.isPending());
    }
    ASSERT_TRUE(WorkerPool::waitUntilIdle(forever));
    EXPECT_EQ(fired + cancelled, rounds);
}

TEST(Timer, CancelledWhileItsItemStandsInLineDoesNotFire) {
    auto queue = DispatchQueue::serial("timed");
    Clock::set(Clock::WallTime{});
    bool fired = false;
    queue->sync([&] {
        auto timer = queue->asyncAfter(1ms, [&] { fired = true; });
        Clock::advance(1ms);  // hands the item over; it waits behind this one
        EXPECT_TRUE(timer.isPending());
        EXPECT_TRUE(timer.cancel());
    });
    ASSERT_TRUE(WorkerPool::waitUntilIdle(forever));
    Clock::release();
    EXPECT_FALSE(fired);
}

TEST(Timer, CancelLetsGoOfTheWorkAtOnce) {
    auto held = std::make_shared<int>(1);
    std::weak_ptr<int> watch = held;
    auto timer = DispatchQueue::serial("timed")->asyncAfter(1h, [held = std::move(held)] {});
    EXPECT_FALSE(watch.expired());
    EXPECT_TRUE(timer.cancel());
    EXPECT_TRUE(watch.expired());
    EXPECT_FALSE(Timer().cancel());
}

class ClockTest : public ::testing::Test {
protected:
    void TearDown() override {
        WorkerPool::cancelAllTimers();
        Clock::release();
        Clock::setTimeZone(std::nullopt);
    }
    std::shared_ptr<DispatchQueue> queue = DispatchQueue::serial("timed");
    Journal<int> journal;
    void after(int delay) {
        queue->asyncAfter(std::chrono::milliseconds(delay), [this, delay] { journal.add(delay); });
    }
    std::vector<int> fired() {
        queue->sync([] {});
        return journal.entries();
    }
};

TEST_F(ClockTest, AStoppedClockFiresTimersByAdvanceAloneAndInOrder) {
    Clock::set(Clock::WallTime(1'700'000'000'999ms));
    for (int delay : {30, 10, 20, 10'000}) after(delay);
    EXPECT_THAT(fired(), ElementsAre());
    Clock::advance(9ms);
    EXPECT_THAT(fired(), ElementsAre());
    Clock::advance(1ms);
    EXPECT_THAT(fired(), ElementsAre(10));
    Clock::advance(25ms);
    EXPECT_THAT(fired(), ElementsAre(10, 20, 30));
    after(0);
    EXPECT_THAT(fired(), ElementsAre(10, 20, 30, 0));
    EXPECT_EQ(Clock::now(), Clock::WallTime(1'700'000'001'034ms));
    EXPECT_EQ(Clock::secondsSince1970(), 1'700'000'001);
}

TEST_F(ClockTest, SteadyTimeNeverGoesBack) {
    auto last = Clock::steadyNow();
    const std::pair<const char*, std::function<void()>> changes[] = {{"set", [] { Clock::set(Clock::WallTime(5s)); }},
                                                                     {"forward", [] { Clock::advance(1h); }},
                                                                     {"back", [] { Clock::advance(-2h); }},
                                                                     {"release", [] { Clock::release(); }}};
    for (auto& [name, change] : changes) {
        change();
        auto now = Clock::steadyNow();
        EXPECT_GE(now, last) << name;
        last = now;
    }
}

TEST_F(ClockTest, ZoneComesFromTheSettingThenTheEnvironment) {
    auto value = std::getenv("TZ");
    auto before = value ? std::optional<std::string>(value) : std::nullopt;
    for (auto [variable, zone] : {std::pair("Asia/Kolkata", "Asia/Kolkata"),
                                  {":Europe/Berlin", "Europe/Berlin"},
                                  {"/usr/share/zoneinfo/America/New_York", "America/New_York"},
                                  {"", "UTC"}}) {
        setenv("TZ", variable, 1);
        EXPECT_EQ(Clock::timeZone(), zone);
    }
    Clock::setTimeZone("Asia/Tokyo");
    EXPECT_EQ(Clock::timeZone(), "Asia/Tokyo");
    Clock::setTimeZone(std::nullopt);
    unsetenv("TZ");
    EXPECT_FALSE(Clock::timeZone().empty());
    if (before) setenv("TZ", before->c_str(), 1);
}

}  // namespace tarvo::platform::testing
