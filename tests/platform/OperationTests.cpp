#include "platform/operations/Operation.h"
#include "platform/operations/OperationQueue.h"

#include <gmock/gmock.h>

#include <thread>

#include "tests/platform/Support.h"

namespace tarvo::platform::testing {

using ::testing::ElementsAre;

// An operation that keeps its own state, as classes above this library do.
class LateOperation : public Operation {
public:
    bool isAsynchronous() const override { return true; }
    bool isExecuting() const override { return executing_; }
    bool isFinished() const override { return finished_; }
    void start() override {
        if (isCancelled()) return set("isFinished", finished_, true);
        set("isExecuting", executing_, true);
        main();
    }
    void main() override { started.count_down(); }
    void complete() {
        set("isExecuting", executing_, false);
        set("isFinished", finished_, true);
    }

    std::latch started{1};

private:
    void set(std::string_view key, std::atomic<bool>& flag, bool value) {
        willChangeValue(key);
        flag = value;
        didChangeValue(key);
    }
    std::atomic<bool> executing_ = false, finished_ = false;
};

class OperationTest : public ::testing::Test {
protected:
    OperationQueue queue{"operations"};
    Journal<std::string> journal;

    std::shared_ptr<Operation> noting(std::string what) {
        return std::make_shared<BlockOperation>([this, what] { journal.add(what); });
    }
    /// Runs the rest and waits until it is through.
    void finish() {
        std::latch through(1);
        queue.setSuspended(false);
        queue.addBarrierBlock([&] { through.count_down(); });
        through.wait();
        ASSERT_TRUE(WorkerPool::waitUntilIdle(forever));
        EXPECT_EQ(queue.operationCount(), 0u);
    }
};

TEST_F(OperationTest, ADependencyOfAnotherQueueAndOneDoneBeforeCount) {
    auto early = noting("early"), other = noting("other"), last = noting("last");
    early->start();
    last->addDependency(early);
    last->addDependency(other);
    queue.addOperation(last);
    OperationQueue second;
    second.addOperation(other);
    finish();
    EXPECT_THAT(journal.entries(), ElementsAre("early", "other", "last"));
}

TEST_F(OperationTest, CancelledBeforeItsStartItNeverRunsAndStillFinishes) {
    queue.setSuspended(true);
    auto cancelled = noting("cancelled"), after = noting("after");
    after->addDependency(cancelled);
    cancelled->setCompletionBlock([this] { journal.add("completed"); });
    queue.addOperation(cancelled);
    queue.addOperation(after);
    cancelled->cancel();
    finish();
    EXPECT_TRUE(cancelled->isCancelled() && cancelled->isFinished());
    EXPECT_THAT(journal.entries(), ::testing::UnorderedElementsAre("completed", "after"));
}

TEST_F(OperationTest, CancelFreesOperationsThatWaitForEachOther) {
    auto a = noting("a"), b = noting("b");
    a->addDependency(b);
    b->addDependency(a);
    queue.addOperation(a);
    queue.addOperation(b);
    EXPECT_EQ(queue.operationCount(), 2u);
    queue.cancelAllOperations();
    finish();
    EXPECT_THAT(journal.entries(), ElementsAre());
}

TEST_F(OperationTest, ALimitHoldsAndIsUsed) {
    queue.setMaxConcurrentOperationCount(2);
    std::atomic<int> running = 0, tooMany = 0;
    std::latch pair(2);
    for (int i = 0; i < 40; ++i)
        queue.addOperation([&, i] {
            tooMany += ++running > 2;
            if (i < 2) pair.arrive_and_wait();
            --running;
        });
    finish();
    EXPECT_EQ(tooMany, 0);
}

TEST_F(OperationTest, OneAtATimeKeepsTheOrderOfArrival) {
    queue.setMaxConcurrentOperationCount(1);
    std::vector<int> ran;  // guarded by the limit alone
    for (int i = 0; i < 500; ++i) queue.addOperation([&ran, i] { ran.push_back(i); });
    finish();
    ASSERT_EQ(ran.size(), 500u);
    EXPECT_TRUE(std::is_sorted(ran.begin(), ran.end()));
}

TEST_F(OperationTest, AnAsynchronousOneHoldsItsPlaceUntilItTellsTheEnd) {
    queue.setMaxConcurrentOperationCount(1);
    auto late = std::make_shared<LateOperation>();
    std::latch completed(1);
    late->setCompletionBlock([&] {
        journal.add("completed");
        completed.count_down();
    });
    queue.addOperation(late);
    queue.addOperation(noting("next"));
    late->started.wait();
    ASSERT_TRUE(WorkerPool::waitUntilIdle(forever));
    EXPECT_TRUE(late->isExecuting());
    EXPECT_EQ(queue.operationCount(), 2u);
    std::jthread([&] { late->complete(); }).join();
    completed.wait();
    finish();
    EXPECT_THAT(journal.entries(), ::testing::UnorderedElementsAre("completed", "next"));
}

TEST_F(OperationTest, AnAsynchronousOneCancelledOrCompletedBeforeItsStartFinishes) {
    queue.setSuspended(true);
    auto cancelled = std::make_shared<LateOperation>(), completed = std::make_shared<LateOperation>();
    queue.addOperation(cancelled);
    queue.addOperation(completed);
    cancelled->cancel();
    completed->complete();
    EXPECT_EQ(queue.operationCount(), 1u);
    finish();
    EXPECT_TRUE(cancelled->isFinished());
    EXPECT_FALSE(cancelled->started.try_wait() || completed->started.try_wait());
}

TEST_F(OperationTest, ABarrierWaitsForAllBeforeAndHoldsBackAllBehind) {
    std::atomic<int> before = 0;
    std::atomic<bool> fault = false, passed = false;
    for (int i = 0; i < 20; ++i) queue.addOperation([&] { ++before; });
    queue.addBarrierBlock([&] {
        if (before != 20) fault = true;
        passed = true;
    });
    for (int i = 0; i < 20; ++i)
        queue.addOperation([&] {
            if (!passed) fault = true;
        });
    finish();
    EXPECT_FALSE(fault);
}

TEST_F(OperationTest, AnExceptionIsReportedAndTheOperationIsOver) {
    CaughtErrors errors;
    queue.setMaxConcurrentOperationCount(1);
    queue.addOperation([] { throw std::runtime_error("x"); });
    queue.addOperation(noting("next"));
    finish();
    EXPECT_THAT(journal.entries(), ElementsAre("next"));
    EXPECT_EQ(errors.count(), 1u);
}

TEST_F(OperationTest, DroppingTheQueueKeepsItsOperationsExceptSuspendedOnes) {
    auto first = std::make_shared<LateOperation>();
    auto second = noting("second"), never = noting("never");
    second->addDependency(first);
    {
        OperationQueue dropped, suspended;
        dropped.addOperation(first);
        dropped.addOperation(second);
        suspended.setSuspended(true);
        suspended.addOperation(never);
    }
    first->started.wait();
    first->complete();
    ASSERT_TRUE(WorkerPool::waitUntilIdle(forever));
    EXPECT_THAT(journal.entries(), ElementsAre("second"));
    EXPECT_EQ(never.use_count(), 1);
}

}  // namespace tarvo::platform::testing
