#include <algorithm>
#include <thread>

#include "tarvobase/configuration/UserAccounts.h"
#include "tarvobase/init_process/InitProcessUseCase.h"
#include "tarvobase/init_process/parsers/InitDownloadParser.h"
#include "tarvobase/notification/BrenNotificationCenter.h"
#include "tarvobase/notification/InitialProcessComplete.h"
#include "tests/tarvobase/ServerFixture.h"

namespace tarvo {
namespace {

using ::testing::ElementsAre;
using enum Process;

/// The events of the running test in their order. The runner does one thing at a time.
std::vector<std::string> events;

/// A step that is started by the runner and completed by the test, or at once.
class ScriptedStep : public CurrentUserStep {
public:
    explicit ScriptedStep(Process process, std::vector<Process> waitsFor = {}) : process(process) {
        for (auto one : waitsFor) dependencyList.push_back({one});
    }
    Process processName() const override { return process; }
    void storeParsedUser() override { events.push_back("user stored"); }
    void initiate() override { events.push_back("initiate " + name()); }
    int totalCallsCount() const override { return total; }
    void execute() override {
        EXPECT_NE(state, ProcessState::inProgress);
        events.push_back(name());
        if (atOnce) complete(true);
    }
    void complete(bool status) { delegate.lock()->didComplete(*this, status); }
    /// Completes as a step does whose content the database did not store.
    void completeUnstored() {
        reportUnstored("content");
        complete(false);
    }
    std::string name() const { return std::string(rawText(process)); }

    const Process process;
    int total = 1;
    bool atOnce = false;
};

class ScriptedInitCall final : public AppInitNetworkServiceProtocol {
public:
    void getAppInitData() override {
        events.push_back("appInit");
        initDataDelegate.lock()->initDataParsed(answer);
    }
    ParsedInitData answer{.createTableQueries = std::vector<std::string>()};
};

class ScriptedLookups final : public PopulateRelatedModulesDMP {
public:
    bool populateLookupColumn() override {
        events.push_back("lookups");
        return areStored;
    }
    bool areStored = true;
};

class Host final : public InitProcessUseCaseDelegate,
                   public NoticeListener<CommonErrorRelay>,
                   public InitialProcessComplete {
public:
    void initProcessCompleted(InitProcessUseCaseProtocol&) override {
        EXPECT_NE(std::this_thread::get_id(), mainThread);
        events.push_back("completed");
        if (releasesWhenCompleted) useCase = nullptr;
    }
    void initProcessIncomplete(InitProcessUseCaseProtocol&) override { events.push_back("incomplete"); }
    void progressDidUpdate(InitProcessUseCaseProtocol&, double value, bool isSucess) override {
        EXPECT_EQ(std::this_thread::get_id(), mainThread);
        percentages.push_back(value);
        failures += !isSucess;
    }
    void initialProcessComplete(const std::string& userId) override { events.push_back("complete for " + userId); }

    const std::thread::id mainThread = std::this_thread::get_id();
    std::shared_ptr<InitProcessUseCase> useCase;
    bool releasesWhenCompleted = false;
    std::vector<double> percentages;
    int failures = 0;

private:
    void noticed(const std::string& notice) override {
        EXPECT_EQ(std::this_thread::get_id(), mainThread);
        events.push_back(notice);
    }
};

class InitProcessTest : public ServerTest {
protected:
    void SetUp() override {
        ServerTest::SetUp();
        events.clear();
        BrenNotificationCenter::shared().add<InitialProcessComplete>(host);
        defaults = std::make_shared<BrenUserDefaults>();
        newRun();
    }
    /// Makes fresh steps, as a start of the program does.
    void newRun() {
        auto step = [&](Process process, std::vector<Process> waitsFor = {}) {
            return std::make_shared<ScriptedStep>(process, std::move(waitsFor));
        };
        list = {step(customviews), step(metadata),
                step(currency),    step(initialRecords, {metadata, customviews}),
                step(permission),  step(pipelines, {metadata})};
        user = step(currentUser);
        user->atOnce = true;
        auto appInit =
            std::make_shared<AppInitDataManager>(AppInitDataManager::Persistance{.scope = Scope::current()}, call);
        call->initDataDelegate = appInit;
        host->useCase = InitProcessUseCase::make({std::make_shared<InitProcessDataManager>(defaults),
                                                  user,
                                                  appInit,
                                                  UserDefaultsUtil(defaults),
                                                  {list.begin(), list.end()},
                                                  lookups,
                                                  Scope::current()});
        host->useCase->delegate = host;
    }
    std::vector<std::string> start() {
        host->useCase->startInitProcess();
        settle();
        return std::exchange(events, {});
    }
    /// Reports progress of a step. Returns the percentage that the host sees afterwards.
    double report(Process process, int current, int total) {
        host->useCase->progressDidUpdate(step(process), current, total);
        settle();
        return host->percentages.back();
    }
    ScriptedStep& step(Process process) {
        return **std::ranges::find_if(list, [&](auto& one) { return one->process == process; });
    }
    bool isRecorded() { return UserAccountsManager(defaults).isInitialDownloadComplete("1001"); }

    std::shared_ptr<ScriptedLookups> lookups = std::make_shared<ScriptedLookups>();
    std::shared_ptr<Host> host = std::make_shared<Host>();
    std::shared_ptr<ScriptedInitCall> call = std::make_shared<ScriptedInitCall>();
    std::shared_ptr<UserDefaultsProtocol> defaults;
    std::shared_ptr<ScriptedStep> user;
    std::vector<std::shared_ptr<ScriptedStep>> list;
};

struct Move {
    Process completes;
    bool status;
    std::vector<std::string> then;
};
const std::vector<std::string> end{"completed", "complete for 1001"};

class InitProcessOrderTest : public InitProcessTest, public ::testing::WithParamInterface<std::vector<Move>> {};

TEST_P(InitProcessOrderTest, AStepStartsAfterItsLastDependency) {
    EXPECT_THAT(start(),
                ElementsAre("currentUser", "appInit", "user stored", "initiate customviews", "initiate metadata",
                            "initiate currency", "initiate initialRecords", "initiate permission", "initiate pipelines",
                            "customviews", "metadata", "currency", "permission"));
    bool ended = false;
    for (auto& move : GetParam()) {
        EXPECT_EQ(isRecorded(), ended);
        step(move.completes).complete(move.status);
        settle();
        EXPECT_EQ(std::exchange(events, {}), move.then) << rawText(move.completes);
        ended |= move.then == end;
    }
    EXPECT_EQ(UserAccountsManager(defaults).userWithInitialDownloadComplete()->size(), 1u);
    EXPECT_EQ(host->failures, 1);
    EXPECT_TRUE(std::ranges::is_sorted(host->percentages));
    EXPECT_EQ(host->percentages.back(), 100);
    EXPECT_EQ(UserDefaultsUtil(defaults).getProgressPercent(), 100);
}

INSTANTIATE_TEST_SUITE_P(Orders, InitProcessOrderTest,
                         ::testing::Values(std::vector<Move>{{metadata, true, {"lookups", "pipelines"}},
                                                             {currency, false, {}},
                                                             {customviews, true, {"initialRecords"}},
                                                             {initialRecords, true, {}},
                                                             {permission, true, {}},
                                                             {pipelines, true, end},
                                                             {pipelines, true, {}}},
                                           std::vector<Move>{
                                               {permission, true, {}},
                                               {customviews, true, {}},
                                               {metadata, false, {"lookups", "initialRecords", "pipelines"}},
                                               {pipelines, true, {}},
                                               {initialRecords, true, {}},
                                               {currency, true, end}}));

TEST_F(InitProcessTest, ReportsAHundredPercentIfEveryStepCompletesAtOnce) {
    for (auto& one : list) one->atOnce = true;
    list[0]->total = list[1]->total = 0;
    host->releasesWhenCompleted = true;
    auto started = start();
    EXPECT_EQ(std::vector(started.end() - 2, started.end()), end);
    EXPECT_EQ(host->percentages.back(), 100);
    EXPECT_TRUE(isRecorded());
}

TEST_F(InitProcessTest, ThePercentageNeverDecreasesInARun) {
    EXPECT_EQ(report(metadata, 0, 0), 0) << "nothing is counted yet";
    step(customviews).total = 4;
    start();
    EXPECT_EQ(host->percentages.back(), 10) << "the init call of 1 + 4 + 5 units";
    EXPECT_EQ(report(metadata, 2, 11), 15) << "3 of 20";
    EXPECT_EQ(report(customviews, 2, 4), 25);
    EXPECT_EQ(report(customviews, 1, 4), 25);
}

TEST_F(InitProcessTest, ThePercentageNeverDecreasesFromRunToRun) {
    UserDefaultsUtil(defaults).setProgressPercent(73);
    newRun();
    settle();
    EXPECT_EQ(host->percentages.back(), 73);
    start();
    EXPECT_EQ(report(metadata, 1, 4), 73);
    EXPECT_EQ(UserDefaultsUtil(defaults).getProgressPercent(), 73);
    EXPECT_EQ(report(metadata, 91, 94), 92) << "92 of 100 units";
}

TEST_F(InitProcessTest, AReleasedRunEndsSilently) {
    start();
    host->useCase->didComplete(step(metadata), true);
    auto released = std::exchange(host->useCase, nullptr);
    std::weak_ptr watched = released;
    released = nullptr;
    settle();
    EXPECT_TRUE(watched.expired());
    EXPECT_FALSE(isRecorded());
}

TEST_F(InitProcessTest, ContentThatIsNotStoredLeavesTheAccountIncomplete) {
    const std::pair<const char*, std::function<void()>> failures[] = {
        {"a step", [this] { list[0]->completeUnstored(); }},
        {"the user", [this] { user->completeUnstored(), list[0]->complete(true); }},
        {"lookup columns", [this] { lookups->areStored = false, list[0]->complete(true); }},
    };
    for (auto& [what, fail] : failures) {
        SCOPED_TRACE(what);
        lookups->areStored = true;
        newRun();
        start();
        fail();
        for (auto& one : list)
            if (one != list[0]) one->complete(true);
        settle();
        EXPECT_EQ(events.back(), "incomplete");
        EXPECT_THAT(std::exchange(events, {}), ::testing::Contains("initialRecords")) << "the other steps still run";
        EXPECT_FALSE(isRecorded());
    }
}

TEST_F(InitProcessTest, AnIncompleteRunTakesAnEarlierRecordBackAndTheFlagsOfWhatIsMissing) {
    UserDefaultsUtil state(defaults);
    state.noteMissing({"metadata_Leads"}, {"metadata_Leads"});
    state.setCompleted("metadata_Leads");
    state.setCompleted("metadata_Deals");
    UserAccountsManager(defaults).initDownloadCompleteForUser("1001");
    start();
    for (auto& one : list) one->completeUnstored();
    settle();
    EXPECT_EQ(events.back(), "incomplete");
    EXPECT_FALSE(isRecorded());
    EXPECT_FALSE(state.isCompleted("metadata_Leads"));
    EXPECT_TRUE(state.isCompleted("metadata_Deals"));
}

TEST_F(InitProcessTest, AnInitCallThatIsUnusableOrNotStoredStopsTheRun) {
    call->answer.createTableQueries = std::nullopt;
    EXPECT_THAT(start(), ElementsAre("currentUser", "appInit", "parsingError"));
    call->answer.createTableQueries.emplace();
    newRun();
    database->deregisterDB();
    EXPECT_THAT(start(), ElementsAre("currentUser", "appInit", "incomplete"));
    EXPECT_FALSE(isRecorded());
}

}  // namespace
}  // namespace tarvo
