#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <latch>

#include "platform/ProgrammingError.h"
#include "tarvobase/utils/AsynchronousOperation.h"
#include "tarvobase/utils/ConcurrentCallsTracker.h"
#include "tarvobase/utils/OrderedDictionary.h"
#include "tarvobase/utils/ReadWriteBox.h"
#include "tarvobase/utils/SynchronizedArray.h"
#include "tarvobase/utils/SynchronizedDictionary.h"
#include "tests/support/OnThreads.h"

namespace tarvo {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

TEST(ReadWriteBoxTests, ReadsRunSideBySideAndWritesAlone) {
    ReadWriteBox<int> box(1);
    std::latch bothInside(2);
    onThreads(2, [&](int) { box.read([&](int) { bothInside.arrive_and_wait(); }); });

    std::atomic<int> inside = 0, overlaps = 0;
    onThreads(4, [&](int t) {
        for (int i = 0; i < 200; ++i) {
            if (t % 2) {
                box.read([&](int) { inside += 2, inside -= 2; });
            } else {
                box.write([&](int& value) {
                    if (inside != 0) ++overlaps;
                    ++value;
                });
            }
        }
    });
    EXPECT_EQ(overlaps, 0);
    EXPECT_EQ(box.value(), 401);
}

TEST(ReadWriteBoxTests, AWriteInsideAReadIsReportedInsteadOfHanging) {
    std::string reported;
    auto former = platform::setProgrammingErrorHandler([&](std::string_view what) { reported = what; });
    ReadWriteBox<int> box(1, "the label");
    box.read([&](int) { box.write([](int&) {}); });
    platform::setProgrammingErrorHandler(former);
    EXPECT_THAT(reported, HasSubstr("the label"));
}

TEST(SynchronizedCollectionsTests, AKeyWithoutAValueIsNotAbsentAndAnIndexOutOfRangeHasNoEffect) {
    SynchronizedDictionary<std::string, int> dictionary;
    dictionary.addValue("a", 1);
    dictionary.addValue("a", 2);
    dictionary.addValue("none", std::nullopt);
    EXPECT_EQ(dictionary["none"], std::nullopt);
    EXPECT_TRUE(dictionary.contains("none"));
    EXPECT_EQ(dictionary.removeValue("a"), 2);
    EXPECT_FALSE(dictionary.contains("a"));

    SynchronizedArray<std::string> array;
    EXPECT_EQ(array.first(), std::nullopt);
    array.append("a");
    array.append("b");
    EXPECT_TRUE(array.set(1, "c"));
    EXPECT_FALSE(array.set(2, "d"));
    EXPECT_EQ(array.removeAtIndex(2), std::nullopt);
    EXPECT_EQ(array.removeAtIndex(0), "a");
    EXPECT_EQ(array.first(), "c");
}

struct Completion : ConcurrentCallsCompletion {
    explicit Completion(std::vector<std::string>& completed) : completed(completed) {}
    void allConcurrentCallsCompleted(const std::string& queueId) override { completed.push_back(queueId); }
    std::vector<std::string>& completed;
};

TEST(ConcurrentCallsTrackerTests, CallsDelegateThenCallbackAtZeroAndBelow) {
    std::vector<std::string> completed;
    auto delegate = std::make_shared<Completion>(completed);
    auto tracker = ConcurrentCallsTracker::tracker(1, std::nullopt, delegate, [&] { completed.push_back("callback"); });
    tracker->increaseTotalCount();
    tracker->callCompleted();
    EXPECT_THAT(completed, ElementsAre());
    tracker->callCompleted();
    EXPECT_THAT(completed, ElementsAre("ConcurrentCallsTracker", "callback"));
    delegate.reset();
    tracker->callCompleted();
    EXPECT_THAT(completed, ElementsAre("ConcurrentCallsTracker", "callback", "callback"));
    tracker->set(0);
    EXPECT_TRUE(tracker->isAllCallsCompleted());
    EXPECT_EQ(completed.size(), 3u) << "setting the count calls nobody";
}

TEST(ConcurrentCallsTrackerTests, RacingCallsAlwaysReportTheEnd) {
    for (int round = 0; round < 200; ++round) {
        std::atomic<int> ends = 0;
        auto tracker = ConcurrentCallsTracker::tracker(3, std::nullopt, {}, [&] { ++ends; });
        onThreads(3, [&](int) { tracker->callCompleted(); });
        ASSERT_GE(ends, 1);
        ASSERT_EQ(tracker->getTotalCount(), 0);
    }
}

struct SlowOperation : AsynchronousOperation {
    std::function<void()> body;
    void main() override { body(); }
};

TEST(AsynchronousOperationTests, AnOperationThatIsCancelledBeforeItsStartNeverRuns) {
    auto operation = std::make_shared<SlowOperation>();
    operation->body = [] { FAIL() << "main ran"; };
    operation->cancel();
    operation->start();
    EXPECT_TRUE(operation->isFinished() && !operation->isExecuting());
}

TEST(AsynchronousOperationTests, ExecutesUntilItIsCompleted) {
    auto operation = std::make_shared<SlowOperation>();
    int completions = 0;
    operation->setCompletionBlock([&] { ++completions; });
    operation->body = [] {};
    operation->start();
    EXPECT_TRUE(operation->isExecuting() && !operation->isFinished());
    EXPECT_EQ(completions, 0);
    operation->completeOperation();
    operation->completeOperation();
    EXPECT_TRUE(operation->isFinished() && !operation->isExecuting());
    EXPECT_EQ(completions, 1);
}

TEST(AsynchronousOperationTests, AnOperationWhoseMainThrowsFinishes) {
    std::string reported;
    auto former = platform::setProgrammingErrorHandler([&](std::string_view what) { reported = what; });
    auto operation = std::make_shared<SlowOperation>();
    operation->body = [] { throw std::runtime_error("no"); };
    operation->start();
    platform::setProgrammingErrorHandler(former);
    EXPECT_TRUE(operation->isFinished());
    EXPECT_THAT(reported, HasSubstr("exception"));
}

using Ordered = OrderedDictionary<std::string, int>;

TEST(OrderedDictionaryTests, KeepsTheOrderOfFirstInsertionAndARemovedKeyReturnsAtTheEnd) {
    auto dictionary = Ordered::uniqueKeysWithValues({{"z", 1}, {"a", 1}, {"m", 1}});
    dictionary.set("a", 2);
    EXPECT_EQ(dictionary, Ordered::uniqueKeysWithValues({{"z", 1}, {"a", 2}, {"m", 1}}));
    EXPECT_NE(dictionary, Ordered::uniqueKeysWithValues({{"a", 2}, {"z", 1}, {"m", 1}}));
    EXPECT_EQ(dictionary.removeValue("z"), 1);
    EXPECT_EQ(dictionary.removeValue("z"), std::nullopt);
    dictionary.set("z", 3);
    EXPECT_THAT(dictionary.keys(), ElementsAre("a", "m", "z"));
    EXPECT_THAT(dictionary.values(), ElementsAre(2, 1, 3));
}

}  // namespace
}  // namespace tarvo
