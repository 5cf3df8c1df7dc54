#include <algorithm>
#include <deque>

#include "platform/Text.h"
#include "tarvobase/configuration/UserAccounts.h"
#include "tarvobase/init_process/InitRecordProcessUseCase.h"
#include "tarvobase/init_process/steps/InitCustomViewDM.h"
#include "tarvobase/init_process/steps/InitMetadataDM.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/metadata/wire/MetadataNS.h"
#include "tarvobase/notification/BrenNotificationCenter.h"
#include "tarvobase/notification/CustomViewChangedObserver.h"
#include "tarvobase/storage/InMemoryStorage.h"
#include "tarvobase/value_objects/view/CustomViewInDatabase.h"
#include "tests/support/LogWatch.h"
#include "tests/tarvobase/MetadataTables.h"
#include "tests/tarvobase/MetadataWire.h"
#include "tests/tarvobase/ServerFixture.h"

namespace tarvo {
namespace {

using ::testing::ElementsAre;
using ::testing::UnorderedElementsAre;
using Feature = ModuleBatchConstant::Feature;
using Names = std::vector<std::string>;

/// Records the events of a step from any queue.
class EventRecorder final : public DownloadProgressible,
                            public CustomViewChangedObserver,
                            public NoticeListener<CommonErrorRelay>,
                            public InitRecordProcessUseCaseDelegate {
public:
    void didComplete(Downloadable&, bool status) override { add(status ? "complete" : "failed"); }
    void progressDidUpdate(Downloadable&, int current, int total) override {
        add(std::to_string(current) + "/" + std::to_string(total));
    }
    void customViewChanged(const Names& viewIDs, const std::string& moduleName) override {
        add(moduleName + ": " + text::join(viewIDs, " "));
    }
    void initRecordProcessCompleted(InitRecordProcessUseCase&) override { add("records complete"); }
    Names take() {
        std::lock_guard lock(mutex_);
        return std::exchange(events_, {});
    }

private:
    void noticed(const std::string& notice) override { add(notice); }
    void add(std::string event) {
        std::lock_guard lock(mutex_);
        events_.push_back(std::move(event));
    }
    std::mutex mutex_;
    Names events_;
};

/// Keeps the calls until the test answers them.
class HeldViewService final : public InitCustomViewNSP {
public:
    void getCustomViews(const std::vector<Module>& modules, NetworkCompletion callback) override {
        asked.push_back(namesOf(modules));
        calls.push_back(std::move(callback));
    }
    Names asked;
    /// A deque, since an answer adds calls while it is being given.
    std::deque<NetworkCompletion> calls;
};

/// The default views of all records of a module, with these ids.
ValueMap viewsEntry(const std::string& module, const Names& ids, const std::string& name = "All") {
    ValueList rows;
    for (auto& id : ids)
        rows.push_back(ValueList{id, name, "All", "s", "S", "true", "true", nullptr, nullptr, ValueList{"F1"}, "null",
                                 "asc", nullptr});
    return {{"info", ValueMap{{"module", module}}}, {"data", std::move(rows)}};
}
/// A module whose records have an id and a name.
ValueMap metadataEntry(const std::string& module) {
    auto id = wire::fieldRow(module, "ID");
    id[1] = "id", id[3] = "ID";
    auto entry = wire::entryWithTables(
        module, {{"module", module}, {"query", "CREATE TABLE " + module + "Records (ID UNIQUE, COL_F1)"}});
    auto sections = wire::sections(module);
    sections[wire::fields] = ValueList{id, wire::fieldRow(module, "F1")};
    entry.set("data", std::move(sections));
    return entry;
}
ValueMap recordsEntry(const std::string& module, const std::string& id) {
    auto record = ValueList{ValueList{"id", id}, ValueList{"Api_F1", "Doe"}};
    return {{"info", ValueMap{{"module", module}}}, {"data", ValueList{Value(std::move(record))}}};
}

class InitBatchTest : public ServerTest {
protected:
    void SetUp() override {
        ServerTest::SetUp();
        createTables(metadataTables());
        database->createTable(customViewTable());
        defaults = std::make_shared<BrenUserDefaults>();
        BrenNotificationCenter::shared().add<CustomViewChangedObserver>(recorder);
    }
    Stores stores() { return Stores::over(database); }
    void store(const Names& names, ModuleType type = ModuleType::default_) {
        stores().modules()->storeModules(modulesNamed(names, type));
    }
    void forgetModules() { stores().modules()->deleteModules(stores().modules()->getAllModules().value()); }
    /// Sets the flag of a step and a module, "metadata_Leads", or clears it.
    void setFlag(const std::string& name, bool isSet) {
        defaults->setBool(isSet, name + "_downloadable", UserDefaultsGroup::current());
    }
    bool isFlagged(const std::string& step, const std::string& module) {
        return UserDefaultsUtil(defaults).isCompleted(step + "_" + module);
    }
    template <class Step>
    std::shared_ptr<Step> recorded(std::shared_ptr<Step> step) {
        step->delegate = recorder;
        step->errorResponder = recorder;
        return step;
    }
    /// Runs a step to its end. Returns its events without the progress, whose first report may come at any point.
    Names runToEnd(BatchedDownloadable& step) {
        step.initiate();
        step.execute();
        settle();
        auto events = recorder->take();
        std::erase_if(events, [](auto& event) { return event.find('/') != std::string::npos; });
        return events;
    }

    std::shared_ptr<BrenUserDefaults> defaults;
    std::shared_ptr<EventRecorder> recorder = std::make_shared<EventRecorder>();
};

TEST_F(InitBatchTest, AFeatureCoversItsModules) {
    using enum ModuleBatchConstant::Feature;
    using enum ModuleType;
    const struct {
        Feature feature;
        std::optional<std::string> supported;
        const char *stored, *done, *taken;
        ModuleType type = default_;
    } cases[] = {
        {metadaInfo, {}, "Leads Tasks Dashboards Approvals Consents Other XLeads", "", "Leads Tasks Consents"},
        {metadaInfo, {}, "CustomModule0 CustomModule9 CustomModule101", "", "CustomModule9"},
        {metadaInfo, {}, "CustomModule00 CustomModule100", "", "CustomModule100"},
        {metadaInfo, {}, "Other", "", "Other", picklisttracker},
        {metadaInfo, {}, "Other", "", "", web},
        {metadaInfo, "Other,Dashboards", "Leads Other Notes Dashboards", "", "Other Notes"},
        {metadaInfo, "Leads,Deals", "Leads Deals Notes", "metadata_Leads customviews_Deals", "Deals Notes"},
        {customView, {}, "Leads Calls Tasks Activities Notes", "", "Leads Activities"},
        {customView, "Leads,Tasks", "Leads Tasks Activities", "", "Leads Activities"},
        {customView, {}, "Other", "", "", subform},
        {initialRecords, "Leads,Tasks,Dashboards", "Leads Tasks Dashboards Activities", "", "Leads Tasks"},
        {initialRecords, {}, "Leads Deals", "initialRecords_Leads", "Deals"},
        {initialRecords, "", "Leads", "", ""},
    };
    for (auto& one : cases) {
        forgetModules();
        store(text::split(one.stored, " "), one.type);
        database->deleteAllObjects("APP_SETTINGS");
        auto persistance = stores();
        // Reads past the memory, since each case replaces the rows of the tables.
        persistance.memory = nullptr;
        if (one.supported)
            persistance.settings()->storeSettings(
                {{"Settings", SettingName::supportedModules, *one.supported, {}, {}}});
        auto done = text::split(one.done, " ");
        for (auto& step : done) setFlag(step, true);
        ModuleBatch batches(one.feature, {persistance.modules(), persistance.settings(), UserDefaultsUtil(defaults)});
        auto taken = batches.initiateBatch({}, 100);
        EXPECT_EQ(taken.empty() ? "" : namesOf(taken.at(0)), one.taken)
            << one.supported.value_or("by pattern") << ": " << one.stored;
        for (auto& step : done) setFlag(step, false);
    }
}

/// The step that downloads views, in batches of four modules whose calls wait for their answers.
class ViewBatchTest : public InitBatchTest {
protected:
    void makeStep() { step = recorded(InitCustomViewDM::make(database, defaults, service)); }
    void start() {
        step->initiate();
        step->execute();
    }
    void startWith(const Names& modules) {
        store(modules);
        makeStep();
        start();
    }
    void answer(std::size_t call, ValueList entries) { answerWith(call, wire::body(std::move(entries))); }
    void answerWith(std::size_t call, const std::string& body, std::optional<NetworkError> error = {}) {
        service->calls.at(call)({.body = Data(body), .error = std::move(error)});
        settle();
    }
    std::size_t storedViews(const std::string& module) {
        return CustomViewInDatabase(database).getCustomViews(module)->size();
    }

    const Names nineModules{"Leads",     "Contacts", "Accounts", "Deals", "Cases",
                            "Solutions", "Products", "Vendors",  "Quotes"};
    const Names fiveModules{nineModules.begin(), nineModules.begin() + 5};
    std::shared_ptr<HeldViewService> service = std::make_shared<HeldViewService>();
    std::shared_ptr<InitCustomViewDM> step;
};

TEST_F(ViewBatchTest, TwoBatchesAreInProgressAtATime) {
    store(nineModules);
    makeStep();
    step->initiate();
    EXPECT_EQ(step->totalCallsCount(), 3);
    EXPECT_TRUE(service->asked.empty());
    step->execute();
    EXPECT_THAT(service->asked, ElementsAre("Leads Contacts Accounts Deals", "Cases Solutions Products Vendors"));
    EXPECT_THAT(recorder->take(), ElementsAre("0/3"));
    answer(0, {});
    EXPECT_EQ(service->asked.back(), "Quotes") << "the third starts as soon as one of two is done";
    EXPECT_THAT(recorder->take(), ElementsAre("parsingError", "1/3")) << "the answer has no entries";
}

TEST_F(ViewBatchTest, ViewsOfABatchAreStoredAnnouncedAndFlaggedWithoutAWarning) {
    LogWatch log;
    startWith(nineModules);
    recorder->take();
    answer(0, {viewsEntry("Leads", {"1", "2"}), viewsEntry("Contacts", {}), viewsEntry("Accounts", {}),
               viewsEntry("Deals", {})});
    EXPECT_THAT(recorder->take(), UnorderedElementsAre("1/3", "Leads: 1 2", "Contacts: ", "Accounts: ", "Deals: "));
    EXPECT_EQ(storedViews("Leads"), 2u);
    EXPECT_TRUE(isFlagged("customviews", "Deals"));
    EXPECT_FALSE(isFlagged("customviews", "Cases"));
    EXPECT_THAT(log.lines(), ::testing::Contains("CustomViewInfo Requested for Leads, Contacts, Accounts, Deals"));
}

TEST_F(ViewBatchTest, ARestartRequestsTheRest) {
    startWith(fiveModules);
    answer(0, {});
    step = nullptr;
    answer(1, {});
    service->asked.clear();
    makeStep();
    start();
    EXPECT_THAT(service->asked, ElementsAre("Cases")) << "its answer came after the step was released";
}

TEST_F(ViewBatchTest, BatchesWithoutAUsableAnswerAreReportedAndCountAsDone) {
    startWith(fiveModules);
    answerWith(1, "<html>");
    answerWith(0, wire::body({viewsEntry("Leads", {"3"})}), NetworkError{NetworkError::Kind::timeout, "time-out"});
    EXPECT_THAT(recorder->take(),
                ElementsAre("0/2", "parsingError", "1/2", "networkResponseError time-out", "complete", "2/2"));
    EXPECT_TRUE(isFlagged("customviews", "Leads") && isFlagged("customviews", "Cases"));
    EXPECT_EQ(storedViews("Leads"), 0u);
    EXPECT_TRUE(wasLogged("CustomViewInfo Completed - failure for Cases"));
    EXPECT_TRUE(wasLogged("CustomViewInfo Batch completed."));
    EXPECT_THAT(runToEnd(*step), ElementsAre("complete"));
    EXPECT_EQ(service->asked.size(), 2u) << "no module is left";
}

TEST_F(ViewBatchTest, ViewsThatAreNotStoredAreRequestedByTheNextRun) {
    startWith({"Leads", "Contacts"});
    setFull(*database, true);
    auto large = viewsEntry("Leads", {"1"}, longText());
    answer(0, {large, viewsEntry("Contacts", {})});
    EXPECT_THAT(recorder->take(), UnorderedElementsAre("0/1", "1/1", "Contacts: ", "failed"));
    EXPECT_TRUE(step->hasUnstoredContent());
    EXPECT_FALSE(isFlagged("customviews", "Leads"));
    EXPECT_TRUE(isFlagged("customviews", "Contacts"));
    setFull(*database, false);
    start();
    EXPECT_EQ(service->asked.back(), "Leads");
    answer(1, {Value(large)});
    EXPECT_FALSE(step->hasUnstoredContent());
    EXPECT_TRUE(isFlagged("customviews", "Leads"));
    EXPECT_EQ(storedViews("Leads"), 1u);
}

TEST_F(ViewBatchTest, ADownloadThatIsNotStoredCallsTheFailure) {
    makeStep();
    std::string ends;
    step->getCustomViews(
        {{.moduleName = "Leads"}}, [&] { ends += "success "; }, [&] { ends += "failure "; });
    setFull(*database, true);
    answer(0, {Value(viewsEntry("Leads", {"1"}, longText()))});
    EXPECT_EQ(ends, "failure ");
    EXPECT_THAT(step->unstoredModules(), ElementsAre("Leads"));
}

/// The host asks again for what the server did not send, for exactly that.
TEST_F(ViewBatchTest, ModulesWithoutContentAreRequestedAgainOnDemand) {
    startWith(fiveModules);
    auto refused = viewsEntry("Contacts", {});
    refused.set("error", ValueList{"CODE", "words"});
    answer(0, {viewsEntry("Leads", {}), refused, viewsEntry("Accounts", {})});
    answerWith(1, "<html>");
    UserDefaultsUtil(defaults).requestMissingAgain();
    start();
    EXPECT_EQ(service->asked.back(), "Contacts Deals Cases") << "refused, left out, unreadable";
    answer(2, {viewsEntry("Contacts", {}), viewsEntry("Deals", {}), viewsEntry("Cases", {})});
    UserDefaultsUtil(defaults).requestMissingAgain();
    step->initiate();
    EXPECT_EQ(step->totalCallsCount(), 0) << "nothing is missing any more";
}

TEST_F(InitBatchTest, AShutdownLeavesTheBatchUndone) {
    store({"Leads"});
    for (auto kind : {NetworkError::Kind::shutDown, NetworkError::Kind::notSent}) {
        network->fail(kind);
        auto step = recorded(InitCustomViewDM::make(database, defaults, overNetwork<InitCustomViewNS>()));
        bool isShutDown = kind == NetworkError::Kind::shutDown;
        EXPECT_EQ(runToEnd(*step), isShutDown ? Names() : (Names{"noAuthtoken 1001", "complete"}));
        EXPECT_EQ(isFlagged("customviews", "Leads"), !isShutDown);
    }
}

/// An account with the metadata of Leads and Deals and a default view of each, before its records are downloaded.
class InitRecordBatchTest : public InitBatchTest {
protected:
    void SetUp() override {
        InitBatchTest::SetUp();
        store({"Leads", "Contacts", "Accounts", "Deals"});
        network->answer(wire::body({metadataEntry("Leads"), metadataEntry("Deals")}));
        runToEnd(*InitMetadataDM::make(database, database, defaults, overNetwork<MetadataNS>()));
        network->answer(
            wire::body({viewsEntry("Leads", {"11"}), viewsEntry("Deals", {"44"}), viewsEntry("Contacts", {})}));
        runToEnd(*InitCustomViewDM::make(database, defaults, overNetwork<InitCustomViewNS>()));
        recorder->take();
    }
    std::shared_ptr<InitCVRecordsDM> recordsStep() {
        return recorded(InitCVRecordsDM::make(database, defaults, overNetwork<InitCVRecordsNS>()));
    }
    std::shared_ptr<InitRecordProcessUseCase> recordProcess() {
        auto useCase = InitRecordProcessUseCase::make(database, defaults, overNetwork<InitCVRecordsNS>());
        useCase->delegate = recorder;
        return useCase;
    }
    /// Downloads one lead; the entry of the deals says that there are none.
    void downloadRecords() {
        network->answer(wire::body({recordsEntry("Leads", "1"), withoutData("Deals")}));
        EXPECT_THAT(runToEnd(*recordsStep()), ElementsAre("complete"));
    }
    static ValueMap withoutData(const std::string& module) {
        return {{"info", ValueMap{{"module", module}, {"nodata", true}}}};
    }
};

TEST_F(InitRecordBatchTest, RecordsAreRequestedByDefaultViewAndCountedByModule) {
    EXPECT_EQ(recordsStep()->totalCallsCount(), 1) << "the batches are not known yet";
    downloadRecords();
    for (auto module : {"Leads", "Deals"}) {
        EXPECT_EQ(RecordSyncSettingsPersistance(defaults).getNumberOfRecordsDownloaded(module), 1);
        EXPECT_TRUE(isFlagged("initialRecords", module));
    }
    EXPECT_FALSE(isFlagged("initialRecords", "Contacts")) << "it has no default view";
    auto call = network->calls().back();
    EXPECT_TRUE(call.request.url.ends_with("/products/getcvrecords")) << call.request.url;
    EXPECT_EQ(call.params.value(), (ValueMap{{"cvid", ValueList{"11", "44"}},
                                             {"module", ValueList{"Leads", "Deals"}},
                                             {"moduleAPI", ValueList{"Leads_API", "Deals_API"}},
                                             {"cvName", ValueList{"All", "All"}}}));
    EXPECT_TRUE(wasLogged("InitCVRecords request completed - success for Leads, Deals"));
    int ends = 0;
    auto calls = network->calls().size();
    recordsStep()->getCustomViewRecords(std::vector<Module>(), [&] { ++ends; }, {});
    EXPECT_EQ(ends, 1) << "an empty list of modules is done at once";
    EXPECT_EQ(network->calls().size(), calls);
}

TEST_F(InitRecordBatchTest, NoDefectOfAnEntryCostsAnotherEntry) {
    auto nameless = recordsEntry("Leads", "9");
    nameless.set("info", ValueMap());
    auto refused = recordsEntry("Deals", "9");
    refused.set("error", ValueList{"CODE", "words"});
    auto body = wire::body({recordsEntry("Leads", "1"), nameless, refused, ValueMap(), withoutData("Deals"),
                            recordsEntry("Nowhere", "9"), recordsEntry("Leads", "2")});
    body.replace(body.find("Doe"), 2, "D\xC3");
    network->answer(body);
    EXPECT_THAT(runToEnd(*recordsStep()), ElementsAre("complete"));
    EXPECT_EQ(database->count("LeadsRecords", std::nullopt), 2);
    EXPECT_EQ(database->count("DealsRecords", std::nullopt), 0);
    EXPECT_TRUE(wasLogged("1 bytes that are not UTF-8"));
    EXPECT_FALSE(wasLogged("words")) << "texts of the server's errors stay out of the log";
}

/// An entry that is missing, or whose count is of another kind, costs itself. It is reported, and requested on demand.
TEST_F(InitRecordBatchTest, ADefectiveEntryIsReportedAndNoted) {
    for (bool isThere : {false, true}) {
        ValueList entries{recordsEntry("Leads", "1")};
        auto deals = recordsEntry("Deals", "2");
        deals.set("info", ValueMap{{"module", "Deals"}, {"count", ValueList{}}});
        if (isThere) entries.emplace_back(deals);
        network->answer(wire::body(entries));
        EXPECT_THAT(runToEnd(*recordsStep()), ElementsAre("parsingError", "complete")) << isThere;
        EXPECT_TRUE(wasLogged("without usable content: Deals"));
        EXPECT_EQ(database->count("LeadsRecords", std::nullopt), 1);
        EXPECT_TRUE(isFlagged("initialRecords", "Deals"));
        UserDefaultsUtil(defaults).requestMissingAgain();
        EXPECT_FALSE(isFlagged("initialRecords", "Deals"));
        EXPECT_TRUE(isFlagged("initialRecords", "Leads"));
        setFlag("initialRecords_Leads", false);
    }
}

TEST_F(InitRecordBatchTest, RecordsThatAreNotStoredAreNeitherCountedNorFlagged) {
    setFull(*database, true);
    auto large = recordsEntry("Leads", longText());
    network->answer(wire::body({large, withoutData("Deals")}));
    EXPECT_THAT(runToEnd(*recordsStep()), ElementsAre("failed"));
    RecordSyncSettingsPersistance settings(defaults);
    EXPECT_EQ(settings.getNumberOfRecordsDownloaded("Leads").value_or(0), 0);
    EXPECT_FALSE(isFlagged("initialRecords", "Leads"));
    EXPECT_TRUE(isFlagged("initialRecords", "Deals"));
    setFull(*database, false);
    network->answer(wire::body({large}));
    EXPECT_THAT(runToEnd(*recordsStep()), ElementsAre("complete"));
    EXPECT_EQ(network->calls().back().params.value().find("module")->asList()->size(), 1u);
    EXPECT_EQ(database->count("LeadsRecords", std::nullopt), 1);
}

TEST_F(InitRecordBatchTest, RecordsWithoutATableAreTheServersFaultOnceTheirMetadataIsThere) {
    database->dropTable("DealsRecords");
    for (bool hasMetadata : {false, true}) {
        setFlag("metadata_Deals", hasMetadata);
        network->answer(wire::body({recordsEntry("Leads", "1"), recordsEntry("Deals", "2")}));
        EXPECT_EQ(runToEnd(*recordsStep()), hasMetadata ? (Names{"parsingError", "complete"}) : Names{"failed"});
        EXPECT_TRUE(isFlagged("initialRecords", "Leads"));
        EXPECT_EQ(isFlagged("initialRecords", "Deals"), hasMetadata) << "the next run requests what has no flag";
    }
}

TEST_F(InitRecordBatchTest, OnlyModulesWithoutAFlagAreRequestedAgain) {
    downloadRecords();
    auto calls = network->calls().size();
    setFlag("initialRecords_Deals", false);
    network->answer("{}");
    auto useCase = recordProcess();
    EXPECT_FALSE(useCase->defaultCustomViewRequestsCompleted());
    useCase->startInitRecordProcess();
    settle();
    EXPECT_THAT(recorder->take(), UnorderedElementsAre("parsingError", "records complete"));
    EXPECT_TRUE(useCase->defaultCustomViewRequestsCompleted());
    EXPECT_EQ(network->calls().size(), calls + 1);
}

TEST_F(InitRecordBatchTest, TheRecordProcessResetsCountsTablesAndCompletion) {
    downloadRecords();
    auto useCase = recordProcess();
    auto& manager = *useCase->initRecordProcessDataManager;
    manager.resetRecordDownloadedForAllModules();
    EXPECT_EQ(RecordSyncSettingsPersistance(defaults).getNumberOfRecordsDownloaded("Leads"), 0);
    database->dropTable("LeadsRecords");
    manager.createTableForAllModules();
    EXPECT_EQ(database->columnNames("LeadsRecords"), (Names{"ID", "COL_F1"}));
    manager.initRecordProcessCompleteForUser("1001");
    EXPECT_TRUE(UserAccountsManager(defaults).isInitialDownloadComplete("1001"));
}

/// Completes its batches on a concurrent queue while the first ones are still being started.
class ThreadedWorker final : public ModuleBatchDelegate {
public:
    void nextBatch(const std::vector<Module>& modules) override {
        EXPECT_LE(++inFlight, 2);
        ++asked;
        queue->async([this, modules] {
            --inFlight;
            batches->batchCompleted(modules);
        });
    }
    void allBatchesCompleted() override { ++ends; }
    const std::shared_ptr<DispatchQueue> queue = DispatchQueue::concurrent("tests.threadedWorker");
    std::shared_ptr<ModuleBatch> batches;
    std::atomic<int> inFlight = 0, asked = 0, ends = 0;
};

TEST_F(InitBatchTest, BatchesCompleteFromManyThreads) {
    auto worker = std::make_shared<ThreadedWorker>();
    worker->batches = std::make_shared<ModuleBatch>(
        Feature::metadaInfo,
        ModuleBatch::Persistance{stores().modules(), stores().settings(), UserDefaultsUtil(defaults)});
    worker->batches->delegate = worker;
    Names names;
    for (int i = 0; i < 41; ++i) names.push_back("M" + std::to_string(i));
    worker->batches->initiateBatchOfAll(modulesNamed(names), 1);
    worker->batches->start();
    settle();
    EXPECT_EQ(worker->asked, 41);
    EXPECT_EQ(worker->ends, 1);
    EXPECT_EQ(worker->batches->completedBatchCount(), 41);
    EXPECT_TRUE(isFlagged("metadata", "M40"));
}

TEST_F(InitBatchTest, WatermarksBelongToTheAccountAndCountsDoNot) {
    RecordSyncSettingsPersistance settings(defaults);
    // A value under the key that is not a dictionary of modules is ignored.
    defaults->setDictionary({{"Leads", "odd"}}, "ModuleDetails", UserDefaultsGroup::current());
    EXPECT_EQ(settings.getLastModifiedTime("Leads"), std::nullopt);
    settings.storeNumberOfRecordsDownloaded(3, "Leads");
    settings.storeLastModifiedTime("1700", "Leads");
    settings.storeRecordsSynced("Leads", 200, "1700");
    EXPECT_EQ(settings.getLastModifiedTime("Leads"), "1700");
    EXPECT_EQ(settings.getNumberOfRcordsSynced("Leads", "1700"), 200);
    EXPECT_EQ(settings.getNumberOfRcordsSynced("Leads", "1800"), std::nullopt);
    EXPECT_EQ(settings.getNumberOfRcordsSynced("Deals", "1700"), std::nullopt);
    signIn("1002");
    EXPECT_EQ(settings.getLastModifiedTime("Leads"), std::nullopt);
    EXPECT_EQ(settings.getNumberOfRecordsDownloaded("Leads"), 3);
}

}  // namespace
}  // namespace tarvo
