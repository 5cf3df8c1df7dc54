#include "tarvobase/download/DownloadRecordsUseCase.h"
#include "tarvobase/metadata/Stores.h"
#include "tests/tarvobase/NoticeListener.h"
#include "tests/tarvobase/records/sql/RecordTableFixture.h"

namespace tarvo {
namespace {

using Limit = DownloadRecordsMaxCount;

/// Writes down the callbacks, one text each.
class DownloadLog final : public DownloadRecordsUseCaseDelegate, public NoticeListener<DownloadRecordsErrorRelay> {
public:
    void recordsDownloaded(const DownloadedRange& range, const std::string& moduleName, bool hasMore) override {
        add(moduleName + " " + std::to_string(range.from) + "-" + std::to_string(range.to) + (hasMore ? "+" : ""));
    }
    void recordsDownloadDidComplete(const std::string& moduleName) override { add(moduleName + " complete"); }
    void recordsDownloadDidCompleteForAll(const std::vector<Module>& modules) override {
        add("all " + std::to_string(modules.size()));
    }
    std::string take() { return text::join(std::exchange(lines_, {}), ", "); }

private:
    void noticed(const std::string& notice) override { add(notice); }
    void add(std::string line) { lines_.push_back(std::move(line)); }
    std::vector<std::string> lines_;
};

/// A server with a number of leads, which gives them in pages of two or of the size that is asked for.
class DownloadRecordsTest : public RecordTableTest {
protected:
    void SetUp() override {
        RecordTableTest::SetUp();
        use(Naming::api);
        makeLeads({{"Company", FieldDataType::text}});
        auto service = std::make_shared<DownloadRecordsNetworkService>();
        service->setNetworkAdapter(network);
        network->respond = [this](const NetworkCall& call) -> ScriptedNetworkAdapter::Answer { return answerTo(call); };
        usecase = DownloadRecordsUseCase::make(DownloadRecordsDataManager::make(Stores::current(), service));
        usecase->delegate = log;
    }
    ScriptedNetworkAdapter::Answer answerTo(const NetworkCall& call) {
        auto module = call.params->valueOf("module").textOr("");
        if (module == broken) return {"<html>"};
        auto from = *call.params->valueOf("count").asInteger();
        auto size = call.params->valueOf("mcount").asInteger().value_or(2);
        requests += std::to_string(from) + "/" + std::to_string(size) + " ";
        size = std::min(size, longestPage);
        std::vector<std::string> rows;
        for (auto id = from; id < std::min(from + size, onServer); ++id)
            rows.push_back(R"([["id",")" + std::to_string(id) + R"("],["Company","x"]])");
        bool hasMore = isStuck || from + size < onServer;
        return {R"({"response":{"result":[{"info":{"module":")" + module + R"(","more_records":)" +
                (hasMore ? "true" : "false") + R"(,"responsetime":50},"data":[)" + text::join(rows, ",") + "]}]}}"};
    }
    std::string download(Limit limit, std::optional<std::vector<Module>> modules = modulesNamed({"Leads"})) {
        requests.clear();
        usecase->initiateDownload(std::move(modules), limit);
        settle();
        return log->take();
    }
    static std::vector<Module> modulesNamed(const std::vector<std::string>& names) {
        std::vector<Module> modules;
        for (auto& name : names) modules.push_back({.moduleName = name});
        return modules;
    }
    void setLimit(const std::string& defaultNumber, const std::string& customNumber) {
        store(std::vector<Settings>{{"Leads", SettingName::downloadRecords, defaultNumber, customNumber}});
        store(std::vector<Settings>{{"Leads", SettingName::userMaxRecords, "1", "many"}});
    }
    DownloadRecordSettingsPersistance progress() const {
        return {Stores::current().settings(), Stores::current().userDefaults};
    }
    std::int64_t stored() { return adapter().count("LeadsRecords", std::nullopt).value_or(-1); }

    std::shared_ptr<ScriptedNetworkAdapter> network = std::make_shared<ScriptedNetworkAdapter>();
    std::shared_ptr<DownloadRecordsUseCase> usecase;
    std::shared_ptr<DownloadLog> log = std::make_shared<DownloadLog>();
    std::int64_t onServer = 7, longestPage = 10'000;
    bool isStuck = false;
    std::string broken, requests;
};

}  // namespace

TEST_F(DownloadRecordsTest, APageAtATimeUntilTheLimitAndMoreOnRequest) {
    setLimit("2", "3");
    EXPECT_EQ(download(Limit::defaultMaxCount), "Leads 0-3+, Leads complete, all 1");
    EXPECT_EQ(requests, "0/3 ");
    EXPECT_EQ(download(Limit::loadMore), "Leads 3-5+, Leads complete, all 1") << "the size is the server's";
    EXPECT_EQ(download(Limit::loadMore), "Leads 5-7, Leads complete, all 1");
    EXPECT_EQ(progress().numberOfRecordsDownloaded("Leads"), 7);
    EXPECT_EQ(RecordSyncSettingsPersistance(Stores::current().userDefaults).getNumberOfRecordsDownloaded("Leads"),
              std::nullopt)
        << "the first download counts answers";
    EXPECT_EQ(stored(), 7);
    EXPECT_EQ(progress().getMaximumRecordsToDownload("Leads"), 1) << "the user's choice is no number";
}

TEST_F(DownloadRecordsTest, ALimitBeyondAPageAsksAgain) {
    setLimit("7", "");
    onServer = 20, longestPage = 3;
    for (auto limit : {Limit::defaultMaxCount, Limit::defaultOrUserMaxCount}) {
        progress().storeNumberOfRecordsDownloaded(1, "Leads");
        EXPECT_EQ(download(limit), "Leads 1-4+, Leads 4-7+, Leads complete, all 1");
        EXPECT_EQ(requests, "1/7 4/7 ") << "the setting is the size of a page, not what is left";
    }
    onServer = 3, isStuck = true;
    progress().storeNumberOfRecordsDownloaded(0, "Leads");
    EXPECT_EQ(download(Limit::defaultMaxCount), "Leads 0-3+, Leads 3-3+, Leads complete, all 1")
        << "a page without records ends the module";
}

TEST_F(DownloadRecordsTest, AFailureEndsItsModuleAndKeepsItsProgress) {
    setLimit("4", "");
    for (auto name : {"Accounts", "Contacts", "Deals", "Tasks"}) makeModule(name, {field(name, "Company")});
    broken = "Deals";
    adapter().dropTable("TasksRecords");
    auto notices =
        download(Limit::loadMore, modulesNamed({"Deals", "Unknown", "Tasks", "Leads", "Accounts", "Contacts"}));
    EXPECT_THAT(notices, ::testing::EndsWith(", all 6"));
    for (auto part : {"Leads 0-2+, Leads complete", "Accounts complete", "Contacts complete"})
        EXPECT_THAT(notices, ::testing::HasSubstr(part));
    EXPECT_EQ(std::count(notices.begin(), notices.end(), 'D'), 2) << "unableToDownloadRecordsError twice";
    EXPECT_EQ(progress().numberOfRecordsDownloaded("Tasks"), std::nullopt);
    EXPECT_EQ(download(Limit::loadMore, std::vector<Module>()), "all 0");
    adapter().dropTable(std::string(ModuleDatabaseConstants().TableName));
    configuration().databaseAdapter = configuration().databaseAdapter.get();
    auto withoutModules = DownloadRecordsUseCase::make(DownloadRecordsDataManager::make(Stores::over(nullptr)));
    withoutModules->delegate = log;
    withoutModules->initiateDownload(std::nullopt, Limit::loadMore);
    settle();
    EXPECT_EQ(log->take(), "unableToFetchMetadataError");
}

TEST_F(DownloadRecordsTest, APageThatIsOlderThanTheLastSyncIsSyncedAgain) {
    RecordSyncSettingsPersistance sync(Stores::current().userDefaults);
    sync.storeLastModifiedTime("70", "Leads");
    download(Limit::loadMore);
    EXPECT_EQ(sync.getLastModifiedTime("Leads"), "50");
}

TEST_F(DownloadRecordsTest, RecordsThatTwoDownloadsFetchAtOnceCountOnce) {
    EXPECT_EQ(download(Limit::loadMore, modulesNamed({"Leads", "Leads", "Leads"})),
              "Leads 0-2+, Leads complete, Leads 0-2+, Leads complete, Leads 0-2+, Leads complete, all 3");
    EXPECT_EQ(requests, "0/2 0/2 0/2 ");
    EXPECT_EQ(download(Limit::loadMore), "Leads 2-4+, Leads complete, all 1");
}

TEST_F(DownloadRecordsTest, FourModulesAtATimeAndOneRunAfterAnother) {
    std::vector<std::string> names;
    for (int i = 0; i < 6; ++i) {
        names.push_back("M" + std::to_string(i));
        makeModule(names.back(), {field(names.back(), "Company")});
    }
    std::size_t most = 0, answered = 0;
    network->beforeAnswer = [&] { most = std::max(most, network->calls().size() - answered++); };
    usecase->initiateDownload(modulesNamed(names), Limit::loadMore);
    usecase->initiateDownload(modulesNamed({"M0"}), Limit::loadMore);
    settle();
    auto notices = log->take();
    EXPECT_LE(most, DownloadRecordsDataManager::maximumParallelDownloads);
    EXPECT_THAT(notices, ::testing::EndsWith("all 6, M0 2-4+, M0 complete, all 1"));
}

}  // namespace tarvo
