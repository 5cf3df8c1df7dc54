#include "tarvobase/metadata/Stores.h"
#include "tarvobase/sync/SyncRounds.h"
#include "tests/tarvobase/Fixture.h"

namespace tarvo {
namespace {

/// Holds its rounds until the test ends them.
class HeldRunner final : public SyncRoundRunner {
public:
    void runRound(std::shared_ptr<SyncRoundUnderWay> round) override {
        platform::MutexLock lock(mutex_);
        rounds_.push_back(std::move(round));
    }
    std::shared_ptr<RecordsSyncDataManagerDelegate> roundListener() const override { return nullptr; }
    std::vector<std::shared_ptr<SyncRoundUnderWay>> take() {
        platform::MutexLock lock(mutex_);
        return std::exchange(rounds_, {});
    }

private:
    platform::Mutex mutex_;
    std::vector<std::shared_ptr<SyncRoundUnderWay>> rounds_ TARVO_GUARDED_BY(mutex_);
};

/// Rounds whose ends the test decides.
class SyncRoundsTest : public FoundationTest {
protected:
    void ask(const std::string& name, SyncRoundSize size, std::shared_ptr<HeldRunner> runner) {
        rounds.ask(scope, {.moduleName = name}, size, std::move(runner));
    }
    /// Ends what a runner holds, and returns it.
    std::vector<std::string> endAll(HeldRunner& runner) {
        settle();
        std::vector<std::string> ended;
        for (auto& round : runner.take()) {
            ended.push_back(round->module.moduleName + (round->isStopped() ? " stopped" : ""));
            rounds.end(scope, *round);
        }
        return ended;
    }

    const Scope scope = Scope::over(nullptr);
    SyncRounds& rounds = SyncRounds::shared();
    std::shared_ptr<HeldRunner> held = std::make_shared<HeldRunner>();
};

TEST_F(SyncRoundsTest, ACallAfterAStopGetsARoundOfItsOwn) {
    auto later = std::make_shared<HeldRunner>();
    for (auto name : {"A", "B", "C", "D", "E"}) ask(name, SyncRoundSize::any, held);
    settle();
    bool isStopped = false;
    rounds.stop([&] { isStopped = true; });
    ask("E", SyncRoundSize::any, later);
    EXPECT_THAT(endAll(*held), ::testing::UnorderedElementsAre("A stopped", "B stopped", "C stopped", "D stopped"));
    EXPECT_THAT(endAll(*held), ::testing::ElementsAre("E stopped")) << "one module has to wait";
    EXPECT_FALSE(isStopped);
    EXPECT_THAT(endAll(*later), ::testing::ElementsAre("E"));
    EXPECT_TRUE(isStopped);
}

TEST_F(SyncRoundsTest, AStopWaitsForCallsThatWereAnnounced) {
    auto call = rounds.announce(), early = rounds.announce();
    early.reset();
    bool isStopped = false;
    rounds.stop([&] { isStopped = true; });
    EXPECT_TRUE(call->isStopped);
    EXPECT_FALSE(rounds.announce()->isStopped);
    EXPECT_FALSE(isStopped);
    call.reset();
    EXPECT_TRUE(isStopped);
}

TEST_F(SyncRoundsTest, SeveralSmallRoundsTakeThePlaceOfOne) {
    for (std::size_t i = 1; i < SyncRounds::maximumRounds; ++i)
        ask("Large" + std::to_string(i), SyncRoundSize::any, held);
    for (std::size_t i = 0; i <= SyncRounds::smallRoundsPerRound; ++i)
        ask("Small" + std::to_string(i), SyncRoundSize::small, held);
    EXPECT_EQ(endAll(*held).size(), SyncRounds::maximumRounds - 1 + SyncRounds::smallRoundsPerRound);
    EXPECT_EQ(endAll(*held).size(), 1u);
}

}  // namespace
}  // namespace tarvo
