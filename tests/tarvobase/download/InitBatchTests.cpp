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
#include "tests/tarvobase/Fixture.h"
#include "tests/tarvobase/MetadataTables.h"
#include "tests/tarvobase/MetadataWire.h"
#include "tests/tarvobase/NoticeListener.h"

namespace tarvo {
namespace {

using ::testing::ElementsAre;
using ::testing::UnorderedElementsAre;
using Feature = ModuleBatchConstant::Feature;
using Names = std::vector<std::string>;

std::string namesOf(const std::vector<Module>& modules) {
    Names names;
    for (auto& module : modules) names.push_back(module.moduleName);
    return text::join(names, " ");
}
Names namesOf(const ModuleBatch::Batches& batches) {
    Names names;
    for (auto& batch : batches) names.push_back(namesOf(batch));
    return names;
}

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
        calls.push_back([callback](std::string body, std::optional<NetworkError> error) {
            callback({.body = Data(std::move(body)), .error = std::move(error)});
        });
    }
    Names asked;
    /// A deque, since an answer adds calls while it is being given.
    std::deque<std::function<void(std::string, std::optional<NetworkError>)>> calls;
};

ValueMap viewsEntry(const std::string& module, ValueList rows) {
    return {{"info", ValueMap{{"module", module}}}, {"data", std::move(rows)}};
}
/// A default view of all records.
ValueList viewRow(const std::string& id) {
    return {id, "All", "All", "s", "S", "true", "true", nullptr, nullptr, ValueList{"F1"}, "null", "asc", nullptr};
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

class InitBatchTest : public FoundationTest {
protected:
    void SetUp() override {
        FoundationTest::SetUp();
        signIn("1001");
        database = openDatabase();
        for (auto& statement : metadataTables()) database->createTable(statement);
        database->createTable(customViewTable());
        defaults = std::make_shared<BrenUserDefaults>();
        BrenNotificationCenter::shared().add<CustomViewChangedObserver>(recorder);
    }
    Stores stores() { return Stores::over(database); }
    void store(const Names& names, ModuleType type = ModuleType::default_) {
        std::vector<Module> modules;
        for (auto& name : names) modules.push_back({.moduleName = name, .apiName = name + "_API", .type = type});
        stores().modules()->storeModules(modules);
    }
    void forgetModules() { stores().modules()->deleteModules(stores().modules()->getAllModules().value()); }
    std::string flag(const std::string& step, const std::string& module) {
        return step + "_" + module + "_downloadable";
    }
    bool isFlagged(const std::string& step, const std::string& module) {
        return defaults->boolForKey(flag(step, module), UserDefaultsGroup::current()).value_or(false);
    }
    template <class Service>
    std::shared_ptr<Service> overNetwork() {
        auto service = std::make_shared<Service>();
        service->setNetworkAdapter(network);
        return service;
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

    std::shared_ptr<KelvaDatabasePersistance> database;
    std::shared_ptr<BrenUserDefaults> defaults;
    std::shared_ptr<EventRecorder> recorder = std::make_shared<EventRecorder>();
    std::shared_ptr<ScriptedNetworkAdapter> network = std::make_shared<ScriptedNetworkAdapter>();
};

TEST_F(InitBatchTest, AFeatureCoversItsModules) {
    using enum ModuleBatchConstant::Feature;
    using enum ModuleType;
    struct {
        Feature feature;
        std::optional<std::string> supported;
        Names stored;
        Names done;
        std::string taken;
        ModuleType type = default_;
    } cases[] = {
        {metadaInfo,
         {},
         {"Leads", "Tasks", "Dashboards", "Approvals", "Consents", "Other", "XLeads"},
         {},
         "Leads Tasks Consents"},
        {metadaInfo,
         {},
         {"CustomModule0", "CustomModule9", "CustomModule100", "CustomModule101"},
         {},
         "CustomModule9 CustomModule100"},
        {metadaInfo, {}, {"Other"}, {}, "Other", picklisttracker},
        {metadaInfo, {}, {"Other"}, {}, "", web},
        {metadaInfo, "Other,Dashboards", {"Leads", "Other", "Notes", "Dashboards"}, {}, "Other Notes"},
        {metadaInfo,
         "Leads,Deals",
         {"Leads", "Deals", "Notes"},
         {"metadata_Leads", "customviews_Deals"},
         "Deals Notes"},
        {customView, {}, {"Leads", "Calls", "Tasks", "Activities", "Notes"}, {}, "Leads Activities"},
        {customView, "Leads,Tasks", {"Leads", "Tasks", "Activities"}, {}, "Leads Activities"},
        {customView, "Leads,Tasks", {"Leads", "Tasks"}, {}, "Leads"},
        {customView, {}, {"Other"}, {}, "", subform},
        {initialRecords, "Leads,Tasks,Dashboards", {"Leads", "Tasks", "Dashboards", "Activities"}, {}, "Leads Tasks"},
        {initialRecords, {}, {"Leads", "Deals"}, {"initialRecords_Leads"}, "Deals"},
        {initialRecords, "", {"Leads"}, {}, ""},
    };
    for (auto& one : cases) {
        forgetModules();
        store(one.stored, one.type);
        database->deleteAllObjects("APP_SETTINGS");
        auto persistance = stores();
        // Reads past the memory, since each case replaces the rows of the tables.
        persistance.memory = nullptr;
        if (one.supported)
            persistance.settings()->storeSettings({{.moduleName = "Settings",
                                                    .settingsKey = SettingName::supportedModules,
                                                    .defaultSettings = *one.supported}});
        for (auto& step : one.done) defaults->setBool(true, step + "_downloadable", UserDefaultsGroup::current());
        ModuleBatch batches(one.feature, {persistance.modules(), persistance.settings(), UserDefaultsUtil(defaults)});
        EXPECT_THAT(namesOf(batches.initiateBatch({}, 100)), one.taken.empty() ? Names() : Names{one.taken})
            << one.supported.value_or("by pattern") << ": " << text::join(one.stored, " ");
        for (auto& step : one.done) defaults->removeValueForKey(step + "_downloadable", UserDefaultsGroup::current());
    }
}

const Names nineModules{"Leads",     "Contacts", "Accounts", "Deals", "Cases",
                        "Solutions", "Products", "Vendors",  "Quotes"};

TEST_F(InitBatchTest, TwoBatchesAreInProgressAtATime) {
    store(nineModules);
    auto service = std::make_shared<HeldViewService>();
    auto step = recorded(InitCustomViewDM::make(database, defaults, service));
    step->initiate();
    EXPECT_EQ(step->totalCallsCount(), 3);
    EXPECT_TRUE(service->asked.empty());
    step->execute();
    EXPECT_THAT(service->asked, ElementsAre("Leads Contacts Accounts Deals", "Cases Solutions Products Vendors"));
    EXPECT_THAT(recorder->take(), ElementsAre("0/3"));
    service->calls.at(0)(wire::body({}), {});
    EXPECT_EQ(service->asked.back(), "Quotes") << "the third starts as soon as one of two is done";
    EXPECT_THAT(recorder->take(), ElementsAre("parsingError", "1/3")) << "the answer has no entries";
}

TEST_F(InitBatchTest, ViewsOfABatchAreStoredAnnouncedAndFlagged) {
    store(nineModules);
    auto service = std::make_shared<HeldViewService>();
    auto step = recorded(InitCustomViewDM::make(database, defaults, service));
    step->initiate();
    step->execute();
    recorder->take();
    service->calls.at(0)(wire::body({viewsEntry("Leads", {viewRow("1"), viewRow("2")}), viewsEntry("Contacts", {}),
                                     viewsEntry("Accounts", {}), viewsEntry("Deals", {})}),
                         {});
    settle();
    EXPECT_THAT(recorder->take(), UnorderedElementsAre("1/3", "Leads: 1 2", "Contacts: ", "Accounts: ", "Deals: "));
    EXPECT_EQ(CustomViewInDatabase(database).getCustomViews("Leads")->size(), 2u);
    EXPECT_TRUE(isFlagged("customviews", "Deals"));
    EXPECT_FALSE(isFlagged("customviews", "Cases"));
}

TEST_F(InitBatchTest, ABatchThatSucceedsLogsNoWarning) {
    store({"Leads"});
    auto service = std::make_shared<HeldViewService>();
    LogWatch log;
    auto step = recorded(InitCustomViewDM::make(database, defaults, service));
    step->initiate();
    step->execute();
    service->calls.at(0)(wire::body({viewsEntry("Leads", {Value(viewRow("1"))})}), {});
    settle();
    EXPECT_THAT(log.lines(), ::testing::Contains("CustomViewInfo Requested for Leads"));
}

TEST_F(InitBatchTest, ARestartRequestsTheRest) {
    store(nineModules);
    auto service = std::make_shared<HeldViewService>();
    auto step = recorded(InitCustomViewDM::make(database, defaults, service));
    step->initiate();
    step->execute();
    service->calls.at(0)(wire::body({}), {});
    step = nullptr;
    service->calls.at(1)(wire::body({}), {});
    EXPECT_FALSE(isFlagged("customviews", "Cases")) << "the answer came after the step was released";
    service->asked.clear();
    step = recorded(InitCustomViewDM::make(database, defaults, service));
    step->initiate();
    step->execute();
    EXPECT_THAT(service->asked, ElementsAre("Cases Solutions Products Vendors", "Quotes"));
}

TEST_F(InitBatchTest, BatchesWithoutAUsableAnswerAreReportedAndCountAsDone) {
    store({"Leads", "Contacts", "Accounts", "Deals", "Cases"});
    auto service = std::make_shared<HeldViewService>();
    auto step = recorded(InitCustomViewDM::make(database, defaults, service));
    step->initiate();
    step->execute();
    service->calls.at(1)("<html>", {});
    service->calls.at(0)(wire::body({viewsEntry("Leads", {Value(viewRow("3"))})}),
                         NetworkError{NetworkError::Kind::timeout, ""});
    settle();
    EXPECT_THAT(recorder->take(), ElementsAre("0/2", "parsingError", "1/2", "networkResponseError", "complete", "2/2"));
    EXPECT_TRUE(isFlagged("customviews", "Leads") && isFlagged("customviews", "Cases"));
    EXPECT_TRUE(CustomViewInDatabase(database).getCustomViews("Leads")->empty());
    EXPECT_THAT(runToEnd(*step), ElementsAre("complete"));
    EXPECT_EQ(service->asked.size(), 2u) << "no module is left";
}

TEST_F(InitBatchTest, ViewsThatAreNotStoredAreRequestedByTheNextRun) {
    store({"Leads", "Contacts"});
    auto service = std::make_shared<HeldViewService>();
    auto step = recorded(InitCustomViewDM::make(database, defaults, service));
    step->initiate();
    step->execute();
    setFull(*database, true);
    auto large = viewRow("1");
    large[1] = longText();
    service->calls.at(0)(wire::body({viewsEntry("Leads", {Value(large)}), viewsEntry("Contacts", {})}), {});
    settle();
    EXPECT_THAT(recorder->take(), UnorderedElementsAre("0/1", "1/1", "Contacts: ", "failed"));
    EXPECT_TRUE(step->hasUnstoredContent());
    EXPECT_FALSE(isFlagged("customviews", "Leads"));
    EXPECT_TRUE(isFlagged("customviews", "Contacts"));
    setFull(*database, false);
    step->initiate();
    step->execute();
    EXPECT_EQ(service->asked.back(), "Leads");
    service->calls.at(1)(wire::body({viewsEntry("Leads", {Value(large)})}), {});
    settle();
    EXPECT_FALSE(step->hasUnstoredContent());
    EXPECT_TRUE(isFlagged("customviews", "Leads"));
    EXPECT_EQ(CustomViewInDatabase(database).getCustomViews("Leads")->size(), 1u);
}

TEST_F(InitBatchTest, ADownloadThatIsNotStoredCallsTheFailure) {
    auto service = std::make_shared<HeldViewService>();
    auto step = InitCustomViewDM::make(database, defaults, service);
    std::string ends;
    step->getCustomViews(
        {{.moduleName = "Leads"}}, [&] { ends += "success "; }, [&] { ends += "failure "; });
    setFull(*database, true);
    auto large = viewRow("1");
    large[1] = longText();
    service->calls.at(0)(wire::body({viewsEntry("Leads", {Value(large)})}), {});
    EXPECT_EQ(ends, "failure ");
    EXPECT_THAT(step->unstoredModules(), ElementsAre("Leads"));
}

/// The host asks again for what the server did not send, for exactly that.
TEST_F(InitBatchTest, ModulesWithoutContentAreRequestedAgainOnDemand) {
    store({"Leads", "Contacts", "Accounts", "Deals", "Cases"});
    auto service = std::make_shared<HeldViewService>();
    auto step = recorded(InitCustomViewDM::make(database, defaults, service));
    step->initiate();
    step->execute();
    auto refused = viewsEntry("Contacts", {});
    refused.set("error", ValueList{"CODE", "words"});
    service->calls.at(0)(wire::body({viewsEntry("Leads", {}), refused, viewsEntry("Accounts", {})}), {});
    service->calls.at(1)("<html>", {});
    settle();
    UserDefaultsUtil(defaults).requestMissingAgain();
    step->initiate();
    step->execute();
    EXPECT_EQ(service->asked.back(), "Contacts Deals Cases") << "refused, left out, unreadable";
    service->calls.at(2)(wire::body({viewsEntry("Contacts", {}), viewsEntry("Deals", {}), viewsEntry("Cases", {})}),
                         {});
    settle();
    UserDefaultsUtil(defaults).requestMissingAgain();
    step->initiate();
    EXPECT_EQ(step->totalCallsCount(), 0) << "nothing is missing any more";
}

TEST_F(InitBatchTest, AnOutdatedStepStoresAndFlagsNothing) {
    store({"Leads"});
    auto service = std::make_shared<HeldViewService>();
    auto step = recorded(InitCustomViewDM::make(database, defaults, service));
    step->initiate();
    step->execute();
    configuration().currentOrgID = "other";
    service->calls.at(0)(wire::body({viewsEntry("Leads", {Value(viewRow("1"))})}), {});
    settle();
    EXPECT_THAT(recorder->take(), UnorderedElementsAre("0/1", "1/1", "failed"));
    EXPECT_TRUE(CustomViewInDatabase(database).getCustomViews("Leads")->empty());
    EXPECT_FALSE(isFlagged("customviews", "Leads"));
}

TEST_F(InitBatchTest, ProgressLinesNameTheModules) {
    store({"Leads", "Contacts", "Accounts", "Deals", "Cases"});
    auto service = std::make_shared<HeldViewService>();
    auto step = recorded(InitCustomViewDM::make(database, defaults, service));
    step->initiate();
    step->execute();
    service->calls.at(1)("<html>", {});
    service->calls.at(0)(wire::body({}), {});
    settle();
    EXPECT_TRUE(wasLogged("CustomViewInfo Requested for Leads, Contacts, Accounts, Deals"));
    EXPECT_TRUE(wasLogged("CustomViewInfo Completed - success for Leads, Contacts, Accounts, Deals"));
    EXPECT_TRUE(wasLogged("CustomViewInfo Completed - failure for Cases"));
    EXPECT_TRUE(wasLogged("CustomViewInfo Batch completed."));
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
        network->answer(wire::body({viewsEntry("Leads", {Value(viewRow("11"))}),
                                    viewsEntry("Deals", {Value(viewRow("44"))}), viewsEntry("Contacts", {})}));
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
        runToEnd(*recordsStep());
    }
    static ValueMap withoutData(const std::string& module) {
        return {{"info", ValueMap{{"module", module}, {"nodata", true}}}};
    }
};

TEST_F(InitRecordBatchTest, MetadataThatIsDoneIsNotRequestedAgain) {
    auto calls = network->calls().size();
    auto metadata = recorded(InitMetadataDM::make(database, database, defaults, overNetwork<MetadataNS>()));
    EXPECT_EQ(metadata->totalCallsCount(), 1);
    EXPECT_THAT(runToEnd(*metadata), ElementsAre("complete"));
    EXPECT_EQ(network->calls().size(), calls);
}

TEST_F(InitRecordBatchTest, RecordsAreRequestedByDefaultView) {
    auto step = recordsStep();
    EXPECT_EQ(step->totalCallsCount(), 1) << "the batches are not known yet";
    network->answer(wire::body({withoutData("Leads"), withoutData("Deals")}));
    EXPECT_THAT(runToEnd(*step), ElementsAre("complete"));
    auto call = network->calls().back();
    EXPECT_TRUE(call.request.url.ends_with("/products/getcvrecords")) << call.request.url;
    EXPECT_EQ(call.params.value(), (ValueMap{{"cvid", ValueList{"11", "44"}},
                                             {"module", ValueList{"Leads", "Deals"}},
                                             {"moduleAPI", ValueList{"Leads_API", "Deals_API"}},
                                             {"cvName", ValueList{"All", "All"}}}));
    EXPECT_TRUE(wasLogged("InitCVRecords request completed - success for Leads, Deals"));
}

/// No defect of one entry may cost another entry.
TEST_F(InitRecordBatchTest, ReadableEntriesAreStoredBesideUnreadableOnes) {
    auto nameless = recordsEntry("Leads", "9");
    nameless.set("info", ValueMap());
    auto refused = recordsEntry("Deals", "9");
    refused.set("error", ValueList{"CODE", "words"});
    network->answer(wire::body({recordsEntry("Leads", "1"), nameless, refused, ValueMap(), withoutData("Deals"),
                                recordsEntry("Nowhere", "9"), recordsEntry("Leads", "2")}));
    EXPECT_THAT(runToEnd(*recordsStep()), ElementsAre("complete"));
    EXPECT_EQ(database->count("LeadsRecords", std::nullopt), 2);
    EXPECT_EQ(database->count("DealsRecords", std::nullopt), 0);
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
        defaults->removeValueForKey(flag("initialRecords", "Leads"), UserDefaultsGroup::current());
    }
}

TEST_F(InitRecordBatchTest, AByteThatIsNotUtf8CostsItself) {
    auto answer = wire::body({recordsEntry("Leads", "1"), recordsEntry("Deals", "2")});
    answer.replace(answer.find("Doe"), 3,
                   "D\xC3"
                   "e");
    network->answer(answer);
    EXPECT_THAT(runToEnd(*recordsStep()), ElementsAre("complete"));
    EXPECT_EQ(database->count("LeadsRecords", std::nullopt), 1);
    EXPECT_EQ(database->count("DealsRecords", std::nullopt), 1);
    EXPECT_TRUE(wasLogged("1 bytes that are not UTF-8"));
}

TEST_F(InitRecordBatchTest, DownloadsAreCountedAndFlaggedByModule) {
    downloadRecords();
    RecordSyncSettingsPersistance settings(defaults);
    EXPECT_EQ(settings.getNumberOfRecordsDownloaded("Leads"), 1);
    EXPECT_EQ(settings.getNumberOfRecordsDownloaded("Deals"), 1);
    EXPECT_TRUE(isFlagged("initialRecords", "Leads") && isFlagged("initialRecords", "Deals"));
    EXPECT_FALSE(isFlagged("initialRecords", "Contacts")) << "it has no default view";
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

TEST_F(InitRecordBatchTest, RecordsWhoseTablesAreStillMissingAreRequestedByTheNextRun) {
    defaults->removeValueForKey(flag("metadata", "Deals"), UserDefaultsGroup::current());
    database->dropTable("DealsRecords");
    network->answer(wire::body({recordsEntry("Leads", "1"), recordsEntry("Deals", "2")}));
    EXPECT_THAT(runToEnd(*recordsStep()), ElementsAre("failed"));
    EXPECT_TRUE(isFlagged("initialRecords", "Leads"));
    EXPECT_FALSE(isFlagged("initialRecords", "Deals"));
}

TEST_F(InitRecordBatchTest, RecordsWithoutATableAreTheServersFault) {
    database->dropTable("DealsRecords");
    network->answer(wire::body({recordsEntry("Leads", "1"), recordsEntry("Deals", "2")}));
    EXPECT_THAT(runToEnd(*recordsStep()), ElementsAre("parsingError", "complete"));
    EXPECT_TRUE(isFlagged("initialRecords", "Deals"));
}

TEST_F(InitRecordBatchTest, RecordsThatAreDoneAreNotRequestedAgain) {
    downloadRecords();
    auto calls = network->calls().size();
    EXPECT_THAT(runToEnd(*recordsStep()), ElementsAre("complete"));
    auto useCase = recordProcess();
    EXPECT_FALSE(useCase->defaultCustomViewRequestsCompleted());
    useCase->startInitRecordProcess();
    settle();
    EXPECT_THAT(recorder->take(), ElementsAre("records complete"));
    EXPECT_EQ(network->calls().size(), calls);
}

TEST_F(InitRecordBatchTest, AModuleWithoutAFlagIsRequestedAgain) {
    downloadRecords();
    auto calls = network->calls().size();
    defaults->removeValueForKey(flag("initialRecords", "Deals"), UserDefaultsGroup::current());
    network->answer("{}");
    auto useCase = recordProcess();
    useCase->startInitRecordProcess();
    settle();
    EXPECT_THAT(recorder->take(), UnorderedElementsAre("parsingError", "records complete"));
    EXPECT_TRUE(useCase->defaultCustomViewRequestsCompleted());
    EXPECT_EQ(network->calls().size(), calls + 1);
}

TEST_F(InitRecordBatchTest, AnEmptyListOfModulesRequestsNothing) {
    auto calls = network->calls().size();
    int ends = 0;
    recordsStep()->getCustomViewRecords(
        std::vector<Module>(), [&] { ++ends; }, [] { FAIL(); });
    EXPECT_EQ(ends, 1);
    EXPECT_EQ(network->calls().size(), calls);
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
    std::vector<Module> modules(41);
    for (std::size_t i = 0; i < modules.size(); ++i) modules[i].moduleName = "M" + std::to_string(i);
    worker->batches->initiateBatchOfAll(modules, 1);
    worker->batches->start();
    settle();
    EXPECT_EQ(worker->asked, 41);
    EXPECT_EQ(worker->ends, 1);
    EXPECT_EQ(worker->batches->completedBatchCount(), 41);
    EXPECT_TRUE(isFlagged("metadata", "M40"));
}

TEST_F(InitBatchTest, WatermarksBelongToTheAccountAndCountsDoNot) {
    RecordSyncSettingsPersistance settings(defaults);
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

TEST_F(InitBatchTest, ABrokenWatermarkIsReplaced) {
    RecordSyncSettingsPersistance settings(defaults);
    // A value under the key that is not a dictionary of modules is ignored.
    defaults->setDictionary({{"Leads", "odd"}}, "ModuleDetails", UserDefaultsGroup::current());
    EXPECT_EQ(settings.getLastModifiedTime("Leads"), std::nullopt);
    settings.storeLastModifiedTime("1", "Leads");
    EXPECT_EQ(settings.getLastModifiedTime("Leads"), "1");
}

}  // namespace
}  // namespace tarvo
