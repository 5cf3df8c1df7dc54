#include <deque>

#include "platform/Clock.h"
#include "platform/Text.h"
#include "tarvobase/record_changes/internal/ChangeDrain.h"
#include "tests/tarvobase/Fixture.h"

namespace tarvo {
namespace {

using namespace std::chrono_literals;
using Outcome = DrainedChanges::Outcome;

/// Changes that are sent when the drain claims them and answered when the test says so.
class ScriptedChanges final : public DrainedChanges {
public:
    std::deque<std::string> ready;
    std::deque<std::pair<std::string, std::function<void(Settle)>>> sent;
    std::vector<std::string> log;
    bool isBroken = false;

    bool reclaim() override {
        log.push_back("reclaim");
        return !isBroken;
    }
    void refresh() override {}
    Next claimNext() override {
        if (isBroken) return {.hasFailed = true};
        if (ready.empty()) return {};
        auto id = ready.front();
        ready.pop_front();
        return {.transactionID = id};
    }
    void send(const std::string& id, std::function<void(Settle)> answered) override {
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
        drain = std::make_shared<ChangeDrain>(changes, folder() + "/lock");
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
        answered([outcome] { return outcome; });
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
    answer(Outcome::settled);
    EXPECT_EQ(takeLog(), "send 5");
    bool isAtRest = false;
    drain->stop([&] { isAtRest = true; });
    give({"6"});
    while (!changes->sent.empty()) {
        EXPECT_FALSE(isAtRest);
        answer(Outcome::settled);
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
    answer(Outcome::settled);
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
    auto otherDrain = std::make_shared<ChangeDrain>(other, folder() + "/lock");
    drain->start();
    otherDrain->start();
    give({"1"});
    other->ready = {"2"};
    otherDrain->wake();
    settle();
    EXPECT_TRUE(otherDrain->status().isLockedOut);
    EXPECT_EQ(otherDrain->status().state, ChangeDrain::State::waiting);
    answer(Outcome::settled);
    advance(ChangeDrain::lockWait);
    ASSERT_EQ(other->sent.size(), 1u);
    give({"3"});
    EXPECT_TRUE(changes->sent.empty());
}

}  // namespace
}  // namespace tarvo
