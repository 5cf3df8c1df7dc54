#include <deque>

#include "platform/Clock.h"
#include "platform/Text.h"
#include "tarvobase/record_changes/internal/ChangeDrain.h"
#include "tests/tarvobase/Fixture.h"

namespace tarvo {
namespace {

using namespace std::chrono_literals;
using Outcome = ChangeAnswer::Outcome;

/// Changes that are sent when the drain claims them and answered when the test says so.
class ScriptedChanges final : public DrainedChanges {
public:
    std::deque<std::string> ready;
    std::deque<std::pair<std::string, ChangeCompletion>> sent;
    std::vector<std::string> log;
    bool isBroken = false;

    bool reclaim() override {
        log.push_back("reclaim");
        return !isBroken;
    }
    void refresh() override {}
    Claims claim(std::size_t most) override {
        Claims claims{.hasFailed = isBroken};
        for (; !isBroken && !ready.empty() && claims.transactionIDs.size() < most; ready.pop_front())
            claims.transactionIDs.push_back(ready.front());
        return claims;
    }
    Settlement settle(std::vector<Answer> answers) override {
        Settlement settlement;
        for (auto& answer : answers)
            (answer.answer.outcome == Outcome::accepted ? settlement.hasSettled : settlement.hasLeft) = true;
        return settlement;
    }
    void giveBack(const std::vector<std::string>& ids) override {
        log.push_back("back " + text::join(ids, " "));
        ready.insert(ready.begin(), ids.begin(), ids.end());
    }
    void send(const std::string& id, ChangeCompletion answered) override {
        log.push_back("send " + id);
        sent.emplace_back(id, std::move(answered));
    }
};

class ChangeDrainTest : public FoundationTest {
protected:
    void SetUp() override {
        FoundationTest::SetUp();
        platform::Clock::set(platform::Clock::now());
        changes = std::make_shared<ScriptedChanges>();
        drain = std::make_shared<ChangeDrain>(changes, std::make_shared<SendingLock>(folder() + "/lock"));
    }
    void TearDown() override {
        drain.reset();
        platform::Clock::release();
        FoundationTest::TearDown();
    }
    void settle() { ASSERT_TRUE(platform::WorkerPool::waitUntilIdle(10s)); }
    void answer(Outcome outcome) {
        auto answered = std::move(changes->sent.front().second);
        changes->sent.pop_front();
        answered({.outcome = outcome});
        settle();
    }
    void advance(std::chrono::milliseconds by) {
        platform::Clock::advance(by);
        settle();
    }
    std::string takeLog() {
        auto text = text::join(changes->log, ", ");
        changes->log.clear();
        return text;
    }
    void give(std::deque<std::string> ids) {
        settle();  // the drain may be looking at what was given before
        changes->ready = std::move(ids);
        drain->wake();
        settle();
    }
    ChangeDrain::State state() const { return drain->status().state; }

    std::shared_ptr<ScriptedChanges> changes;
    std::shared_ptr<ChangeDrain> drain;
};

TEST_F(ChangeDrainTest, SendsFourAtATimeAndNothingWhileItIsOff) {
    give({"1", "2", "3", "4", "5"});
    EXPECT_EQ(takeLog(), "");
    drain->start();
    settle();
    EXPECT_EQ(takeLog(), "reclaim, send 1, send 2, send 3, send 4");
    EXPECT_EQ(state(), ChangeDrain::State::sending);
    answer(Outcome::accepted);
    EXPECT_EQ(takeLog(), "send 5");
    bool isAtRest = false;
    give({"6", "7"});
    drain->stop([&] { isAtRest = true; });
    settle();
    EXPECT_EQ(takeLog(), "back 6 7");
    while (!changes->sent.empty()) {
        EXPECT_FALSE(isAtRest);
        answer(Outcome::accepted);
    }
    EXPECT_TRUE(isAtRest);
    EXPECT_EQ(state(), ChangeDrain::State::off);
    EXPECT_EQ(takeLog(), "");
}

TEST_F(ChangeDrainTest, SendsWithoutAnAnswerBackOffUntilANewChange) {
    drain->start();
    std::vector<std::int64_t> waits;
    for (int round = 0; round < 11; ++round) {
        give({"1"});
        answer(Outcome::noAnswer);
        ASSERT_EQ(state(), ChangeDrain::State::waiting);
        waits.push_back(*drain->status().until - platform::Clock::now().time_since_epoch().count());
    }
    EXPECT_EQ(waits,
              (std::vector<std::int64_t>{1000, 2000, 4000, 8000, 16000, 32000, 64000, 128000, 256000, 300000, 300000}));
    takeLog();
    changes->ready = {"1"};
    advance(299s);
    EXPECT_EQ(takeLog(), "");
    advance(1s);
    EXPECT_EQ(takeLog(), "reclaim, send 1");
    answer(Outcome::accepted);
    give({"2", "3"});
    answer(Outcome::noAnswer);
    answer(Outcome::noAnswer);
    EXPECT_EQ(*drain->status().until - platform::Clock::now().time_since_epoch().count(), 1000);
}

TEST_F(ChangeDrainTest, DatabaseThatRefusesIsAskedAgain) {
    changes->isBroken = true;
    drain->start();
    settle();
    EXPECT_EQ(state(), ChangeDrain::State::waiting);
    changes->isBroken = false;
    changes->ready = {"1"};
    takeLog();
    advance(1s);
    EXPECT_EQ(takeLog(), "reclaim, send 1");
}

TEST_F(ChangeDrainTest, OneProcessDrainsAtATime) {
    auto other = std::make_shared<ScriptedChanges>();
    auto otherDrain = std::make_shared<ChangeDrain>(other, std::make_shared<SendingLock>(folder() + "/lock"));
    drain->start();
    otherDrain->start();
    give({"1"});
    other->ready = {"2"};
    otherDrain->wake();
    settle();
    EXPECT_TRUE(otherDrain->status().isLockedOut);
    EXPECT_EQ(otherDrain->status().state, ChangeDrain::State::waiting);
    answer(Outcome::accepted);
    advance(SendingLock::retryWait);
    ASSERT_EQ(other->sent.size(), 1u);
    give({"3"});
    EXPECT_TRUE(changes->sent.empty());
}

}  // namespace
}  // namespace tarvo
