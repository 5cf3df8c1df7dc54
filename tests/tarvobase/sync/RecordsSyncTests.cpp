#include "tarvobase/notification/BrenNotificationCenter.h"
#include "tarvobase/notification/SyncObserver.h"
#include "tarvobase/record_changes/RecordTransactionManager.h"
#include "tarvobase/sync/AnswersBesideSync.h"
#include "tarvobase/sync/RecordsSyncUseCases.h"
#include "tests/tarvobase/records/sql/RecordTableFixture.h"

namespace tarvo {
namespace {

using T = FieldDataType;

std::string countsOf(const SyncRound& round) {
    return std::to_string(round.added) + "/" + std::to_string(round.edited) + "/" + std::to_string(round.deleted);
}

std::string textOf(const SyncRound& round) {
    auto why = round.reason ? " " + std::string(caseName(*round.reason)) : "";
    return round.moduleName + " " + std::string(caseName(round.outcome)) + why + " " + std::to_string(round.pages) +
           " " + countsOf(round) + " " + round.watermark.value_or("-");
}

/// Writes down the callbacks, one text each.
class SyncLog final : public RecordsSyncUseCaseDelegate, public SyncObserver {
public:
    void syncStarted(const std::string& moduleName) override { lines.push_back("started " + moduleName); }
    void syncResultsFetched(const std::string& moduleName, const Records& added, const Records& edited,
                            const Ids& deleted) override {
        lines.push_back("fetched " + moduleName + " [" + idsOf(added) + "] [" + idsOf(edited) + "] [" +
                        (deleted ? text::join(*deleted, " ") : "absent") + "]");
    }
    bool wantsSyncResults() const override { return wantsResults; }
    void syncsEnded(const std::vector<SyncRound>& rounds) override {
        for (auto& round : rounds) lines.push_back(textOf(round));
        lines.push_back("ended");
    }
    std::vector<std::string> lines;
    bool wantsResults = false;
};

/// Writes down what the bus reports.
class BusLog final : public SyncObserver {
public:
    void syncStarted(const std::string& moduleName) override { add("started " + moduleName); }
    void syncFinished(const std::string& moduleName, ModuleType type) override {
        add("finished " + moduleName + " " + std::string(caseName(type)));
    }
    std::string all() {
        platform::MutexLock lock(mutex_);
        return text::join(std::exchange(lines_, {}), ", ");
    }

private:
    void add(std::string line) {
        platform::MutexLock lock(mutex_);
        lines_.push_back(std::move(line));
    }
    platform::Mutex mutex_;
    std::vector<std::string> lines_ TARVO_GUARDED_BY(mutex_);
};

/// Leads in a real table, and a server that follows a script.
class RecordsSyncTest : public RecordTableTest {
protected:
    void SetUp() override {
        RecordTableTest::SetUp();
        use(Naming::api);
        makeLeads({{"Company", T::text}, {"City", T::text}, {"Due", T::date}, {"Parent", T::lookup}});
        useServer();
    }
    void useServer() {
        network = std::make_shared<ScriptedNetworkAdapter>();
        auto service = std::make_shared<RecordsSyncNetworkService>();
        service->setNetworkAdapter(network);
        manager = RecordsSyncDataManager::make(Stores::current(), service);
        usecase = ModuleyncUseCase::make(manager);
        usecase->delegate = log;
    }
    struct Page {
        std::string added = "[]";
        std::string edited = "[]";
        std::string deleted = "[]";
        std::string info = R"("responsetime":100,"count":1)";
    };
    static std::string bodyOf(const Page& page) {
        auto entry = [&](const std::string& data) {
            return R"({"info":{"module":"Leads",)" + page.info + R"(},"data":)" + data + "}";
        };
        return R"({"response":{"result":[)" + entry(page.added) + "," + entry(page.edited) + "," + entry(page.deleted) +
               "]}}";
    }
    /// Runs a round over these pages, and returns its outcome.
    std::string sync(const std::vector<Page>& pages = {}) {
        for (auto& page : pages) network->answer(bodyOf(page));
        return runRound();
    }
    std::string runRound() {
        log->lines.clear();
        usecase->syncRecords("Leads");
        settle();
        return text::join(log->lines, ", ");
    }
    std::string leads() { return cells("LeadsRecords ORDER BY id", {"id", "Company", "City"}); }
    RecordSyncSettingsPersistance settings() const {
        return RecordSyncSettingsPersistance(Stores::current().userDefaults);
    }
    std::string watermark() const { return settings().getLastModifiedTime("Leads").value_or("none"); }
    /// Returns "lmt count" of all requests.
    std::string asked() const {
        std::vector<std::string> requests;
        for (auto& call : network->calls())
            requests.push_back(call.params->valueOf("lmt").textOr("") + " " +
                               std::to_string(call.params->valueOf("count").asInteger().value_or(-1)));
        return text::join(requests, ", ");
    }
    static std::string lead(const std::string& id, const std::string& company) {
        return R"([["id",")" + id + R"("],["Company",")" + company + R"("]])";
    }
    static std::string listOf(const std::vector<std::string>& leads) { return "[" + text::join(leads, ",") + "]"; }

    std::shared_ptr<ScriptedNetworkAdapter> network;
    std::shared_ptr<RecordsSyncDataManager> manager;
    std::shared_ptr<ModuleyncUseCase> usecase;
    std::shared_ptr<SyncLog> log = std::make_shared<SyncLog>();
};

}  // namespace

TEST_F(RecordsSyncTest, AddedEditedAndDeletedRecordsReachTheTable) {
    fillLeads({{{"id", "1"}, {"Company", "a"}, {"City", "Bonn"}},
               {{"id", "2"}, {"Company", "b"}, {"City", "Ulm"}},
               {{"id", "3"}, {"Company", "c"}, {"City", "Kiel"}}});
    adapter().createTable("CREATE TABLE Leads_CUSTOM_VIEW_RECORDS (cv_id, record, module_name)");
    adapter().execute("INSERT INTO Leads_CUSTOM_VIEW_RECORDS VALUES ('all', '1', 'Leads'), ('all', '3', 'Leads')",
                      std::nullopt);
    log->wantsResults = true;
    auto outcome = sync({{.added = listOf({lead("1", "A"), lead("4", "D")}),
                          .edited = listOf({lead("2", "B"), lead("9", "not here")}),
                          .deleted = R"([["3,8"]])",
                          .info = R"("responsetime":100,"count":6,"more_records":false)"}});
    EXPECT_EQ(outcome, "started Leads, fetched Leads [1 4] [2 9] [3 8], Leads finished 1 2/2/2 100, ended");
    EXPECT_EQ(leads(), R"("1","A",null;"2","B","Ulm";"4","D",null)") << "only an added record is replaced as a whole";
    EXPECT_EQ(cells("Leads_CUSTOM_VIEW_RECORDS", {"record"}), R"("1")") << "a deleted record leaves no place in lists";
    EXPECT_EQ(watermark(), "100");
    EXPECT_EQ(settings().getNumberOfRcordsSynced("Leads", "100"), 6);
    auto call = network->calls().front();
    EXPECT_TRUE(call.request.url.ends_with("/products/getsyncrecords")) << call.request.url;
    ValueMap expected{{"module", "Leads"}, {"moduleAPI", "Leads_Api"}, {"lmt", "0"}, {"count", 0}, {"mcount", 10000}};
    EXPECT_EQ(call.params, expected);
}

TEST_F(RecordsSyncTest, AClearedLookupLosesItsTextAndOneThatIsNotNamedKeepsIt) {
    fillLeads({{{"id", "1"}, {"Parent", "7"}, {"Parent_LOOKUP", "Acme"}},
               {{"id", "2"}, {"Parent", "7"}, {"Parent_LOOKUP", "Acme"}},
               {{"id", "3"}, {"Parent", "7"}, {"Parent_LOOKUP", "Acme"}}});
    sync({{.edited =
               R"([[["id","1"],["Parent",""]],[["id","2"],["City","Ulm"]],[["id","3"],["Parent","8","Zylker"]]])"}});
    EXPECT_EQ(cells("LeadsRecords", {"Parent", "Parent_LOOKUP"}), R"("",null;"7","Acme";"8","Zylker")");
}

TEST_F(RecordsSyncTest, ARoundOfSeveralPagesKeepsTheTimeOfItsFirstOne) {
    auto page = [&](const std::string& id, int time, bool hasMore) {
        return Page{.added = listOf({lead(id, "x")}),
                    .info = R"("count":10,"responsetime":)" + std::to_string(time) +
                            (hasMore ? R"(,"more_records":true)" : "")};
    };
    EXPECT_EQ(sync({page("1", 100, true), page("2", 110, true), page("3", 120, false)}),
              "started Leads, Leads finished 3 3/0/0 100, ended");
    EXPECT_EQ(asked(), "0 0, 0 10, 0 20");
    EXPECT_EQ(settings().getNumberOfRcordsSynced("Leads", "120"), 30);
    EXPECT_EQ(settings().getRound("Leads")->finishedAt, 120);
    EXPECT_EQ(sync({page("4", 90, false)}), "started Leads, Leads finished 1 1/0/0 90, ended")
        << "a time that goes back repeats rows and skips none";
}

TEST_F(RecordsSyncTest, ABrokenRoundKeepsTheWatermarkAndWhatItStored) {
    std::string three = bodyOf({.added = listOf({lead("2", "x")}), .info = R"("responsetime":200,"count":1)"});
    auto replaced = [&](std::string text, const std::string& what, const std::string& by) {
        return text.replace(text.find(what), what.size(), by);
    };
    auto twoEntries = bodyOf({}).substr(0, bodyOf({}).rfind(",{\"info\"")) + "]}}";
    const std::pair<std::string, const char*> cases[] = {
        {"", "noNetwork"},
        {"<html>", "unusableAnswer"},
        {twoEntries, "unusableAnswer"},
        {R"({"response":{"result":[]}})", "unusableAnswer"},
        {R"({"response":{"result":[{"info":{},"error":["INVALID_MODULE","no such module"]}]}})", "refused"},
        {replaced(three, R"("responsetime":200,)", ""), "noResponseTime"},
        {replaced(three, R"("responsetime":200)", R"("responsetime":"200")"), "unusableAnswer"},
        {replaced(three, R"("data":[])", R"("error":["crmNO_PERMISSION","no"])"), "refused"},
        {replaced(three, R"("count":1)", R"("count":0,"more_records":true)"), "noProgress"},
        {replaced(three, R"("count":1)", R"("more_records":true)"), "noProgress"},
        {replaced(three, R"("count":1)", R"("count":9223372036854775807,"more_records":true)"), "noProgress"}};
    auto bus = std::make_shared<BusLog>();
    sync({{.info = R"("responsetime":50,"count":0)"}});
    BrenNotificationCenter::shared().add<SyncObserver>(bus);
    for (auto& [body, reason] : cases) {
        SCOPED_TRACE(reason + (" " + body));
        useServer();
        adapter().deleteObjects("LeadsRecords", Criteria::notEqualTo("id", ""));
        auto first =
            Page{.added = listOf({lead("1", "x")}), .info = R"("responsetime":100,"count":1,"more_records":true)"};
        network->answer(bodyOf(first));
        body.empty() ? network->fail(NetworkError::Kind::timeout) : network->answer(body);
        bool isStored = std::string_view(reason) == "noProgress";
        EXPECT_EQ(runRound(), "started Leads, Leads broken " + std::string(reason) +
                                  (isStored ? " 2 2/0/0" : " 1 1/0/0") + " 50, ended");
        EXPECT_EQ(leads(), isStored ? R"("1","x",null;"2","x",null)" : R"("1","x",null)");
        EXPECT_EQ(watermark(), "50");
        EXPECT_EQ(textOf(*settings().getRound("Leads")).substr(0, 12), "Leads broken");
        EXPECT_EQ(bus->all(), "started Leads");
    }
    useServer();
    EXPECT_EQ(sync({{.added = listOf({lead("1", "y")}), .info = R"("responsetime":300,"count":1)"}}),
              "started Leads, Leads finished 1 1/0/0 300, ended");
    EXPECT_EQ(asked(), "50 0");
    EXPECT_EQ(bus->all(), "started Leads, finished Leads none");
}

TEST_F(RecordsSyncTest, TheEarlierTimeCountsIfAnotherProgramFinishesARoundMeanwhile) {
    struct {
        const char *other, *info, *expected;
    } cases[] = {{"150", R"("responsetime":100,"count":1)", "100"},
                 {"70", R"("responsetime":100,"count":1)", "70"},
                 {"150", R"("responsetime":100,"more_records":true)", "100"},
                 {"70", R"("responsetime":100,"more_records":true)", "70"},
                 {"150", R"("count":1)", "150"}};
    for (auto& [other, info, expected] : cases) {
        SCOPED_TRACE(std::string(other) + " " + info);
        settings().storeLastModifiedTime("50", "Leads");
        network->beforeAnswer = [this, other = other] { settings().storeLastModifiedTime(other, "Leads"); };
        sync({{.added = listOf({lead("1", "x")}), .info = info}});
        EXPECT_EQ(watermark(), expected);
    }
}

TEST_F(RecordsSyncTest, TheWatermarkNeverLiesAfterAnAnswerThatCameBesideTheSync) {
    AnswersBesideSync beside(Stores::current().scope, Stores::current().userDefaults);
    network->beforeAnswer = [&] { beside.stored("Leads", 80); };
    sync({{.added = listOf({lead("1", "x")})}});
    EXPECT_EQ(watermark(), "80") << "an answer during the round";
    network->beforeAnswer = [] {};
    sync({{.added = listOf({lead("1", "x")})}});
    EXPECT_EQ(watermark(), "100");
    for (auto [time, expected] : {std::pair(120, "100"), {90, "90"}, {95, "90"}}) {
        beside.stored("Leads", time);
        EXPECT_EQ(watermark(), expected);
    }
    beside.stored("Leads", std::nullopt);
    beside.stored("Accounts", 10);
    EXPECT_EQ(watermark(), "90");
    EXPECT_EQ(settings().getRound("Leads")->watermark, "90");
}

TEST_F(RecordsSyncTest, OddPagesCostNothingElse) {
    fillLeads({{{"id", "1"}, {"Company", "a"}}, {{"id", "2"}, {"Company", "b"}}});
    struct {
        const char* what;
        Page page;
        const char* leads;
    } cases[] = {
        {"ids that are no text", {.deleted = "[[7]]"}, R"("1","a",null;"2","b",null)"},
        {"a row that is no list", {.deleted = R"(["1"])"}, R"("1","a",null;"2","b",null)"},
        {"ids with gaps", {.deleted = R"([[",8,,"]])"}, R"("1","a",null;"2","b",null)"},
        {"rows without ids",
         {.added = R"([[["Company","x"]]])", .edited = R"([[["Company","x"]],[["id","2"],["Company","B"]]])"},
         R"("1","a",null;"2","B",null)"},
        {"an id in all lists: they are applied in their order",
         {.added = listOf({lead("3", "x")}), .edited = listOf({lead("3", "y")}), .deleted = R"([["3"]])"},
         R"("1","a",null;"2","B",null)"},
        {"an added and edited record",
         {.added = listOf({lead("3", "x")}), .edited = R"([[["id","3"],["City","Ulm"]]])"},
         R"("1","a",null;"2","B",null;"3","x","Ulm")"},
    };
    for (auto& [what, page, expected] : cases) {
        SCOPED_TRACE(what);
        EXPECT_THAT(sync({page}), ::testing::HasSubstr("finished"));
        EXPECT_EQ(leads(), expected);
    }
    EXPECT_TRUE(settings().getLastModifiedTime("Leads"));
    adapter().dropTable("LeadsRecords");
    EXPECT_THAT(sync({{.edited = listOf({lead("1", "z")})}}), ::testing::HasSubstr("broken notStored"));
    adapter().deleteObjects(std::string(FieldMetadataDatabaseConstants().TableName), Criteria::notEqualTo("1", "2"));
    EXPECT_THAT(sync({{.edited = listOf({lead("1", "z")})}}), ::testing::HasSubstr("broken noMetadata"));
    usecase->syncRecords("Nothing");
    log->lines.clear();
    settle();
    EXPECT_EQ(text::join(log->lines, ", "), "ended");
}

TEST_F(RecordsSyncTest, ACallDuringARoundStartsOneMoreAfterIt) {
    auto other = ModuleyncUseCase::make(RecordsSyncDataManager::make(Stores::current()));
    auto otherLog = std::make_shared<SyncLog>();
    other->delegate = otherLog;
    bool isFirst = true;
    network->beforeAnswer = [&] {
        if (!std::exchange(isFirst, false)) return;
        for (int i = 0; i < 3; ++i) manager->syncRecords("Leads");
    };
    network->answer(bodyOf({.info = R"("responsetime":100)"}));
    network->answer(bodyOf({.added = listOf({lead("1", "x")}), .info = R"("responsetime":200)"}));
    runRound();
    EXPECT_EQ(asked(), "0 0, 100 0") << "three calls share the round after the first";
    EXPECT_EQ(watermark(), "200");
    EXPECT_EQ(leads(), R"("1","x",null)");
}

TEST_F(RecordsSyncTest, AStoppedRoundEndsAfterItsPage) {
    bool isStopped = false;
    network->beforeAnswer = [&] {
        manager->syncRecords("Leads");
        SyncRounds::shared().stop([&] { isStopped = true; });
    };
    EXPECT_EQ(
        sync({{.added = listOf({lead("1", "x")}), .info = R"("responsetime":100,"count":1,"more_records":true)"}}),
        "started Leads, Leads broken stopped 1 1/0/0 -, ended");
    EXPECT_TRUE(isStopped);
    EXPECT_EQ(asked(), "0 0") << "neither the next page nor the round that waited";
    EXPECT_EQ(leads(), R"("1","x",null)");
    EXPECT_TRUE(SyncRounds::shared().underWay(Stores::current().scope).empty());
}

TEST_F(RecordsSyncTest, AllModulesAreSyncedAndOneThatFailsCostsNoOther) {
    for (auto name : {"Accounts", "Contacts", "Deals", "Tasks", "Cases"}) makeModule(name, {field(name, "Company")});
    network->respond = [&](const NetworkCall& call) -> ScriptedNetworkAdapter::Answer {
        auto module = call.params->valueOf("module").textOr("");
        if (module == "Deals") return {"<html>"};
        return {bodyOf({.added = listOf({lead("1", module)})})};
    };
    auto all = AllModulesSyncUseCase::make(manager, Stores::current().modules());
    all->delegate = log;
    all->syncAllModules();
    settle();
    EXPECT_EQ(std::count(log->lines.begin(), log->lines.end(), "ended"), 1);
    EXPECT_EQ(log->lines.size(), 6u + 6 + 1);
    std::string rounds;
    for (auto& round : RecordsSyncDataManager::rounds(Stores::current())) rounds += textOf(round) + "; ";
    EXPECT_EQ(rounds,
              "Accounts finished 1 1/0/0 100; Cases finished 1 1/0/0 100; Contacts finished 1 1/0/0 100; "
              "Deals broken unusableAnswer 0 0/0/0 -; Leads finished 1 1/0/0 100; Tasks finished 1 1/0/0 100; ");
    EXPECT_EQ(cells("TasksRecords", {"id", "Company"}), R"("1","Tasks")");
}

TEST_F(RecordsSyncTest, AnAnswerAfterASwitchIsNotStored) {
    network->beforeAnswer = [&] { configuration().currentOrgID = "another"; };
    EXPECT_EQ(sync({{.added = listOf({lead("1", "x")})}}), "started Leads, Leads broken outdated 0 0/0/0 -, ended");
    EXPECT_EQ(leads(), "");
    EXPECT_EQ(watermark(), "none");
}

TEST_F(RecordsSyncTest, ADatabaseThatIsReplacedWhileAPageIsStoredGetsNoWatermark) {
    auto stores = Stores::current();
    auto service = std::make_shared<RecordsSyncNetworkService>();
    service->setNetworkAdapter(network);
    usecase = ModuleyncUseCase::make(RecordsSyncDataManager::make(
        {.recordsSyncNetworkService = service,
         .recordSyncSettings = std::make_shared<RecordSyncSettingsPersistance>(stores.userDefaults),
         .recordPersistanceDelegate = RecordInDatabase::make(stores.databaseAdapter()),
         .metadataPersistance = stores.fields(),
         .modulePersistance = stores.modules(),
         .scope = stores.scope,
         .recordsWithSentChanges = [this] {
             configuration().databaseAdapter = nullptr;
             return std::optional(std::set<std::string>());
         }}));
    usecase->delegate = log;
    EXPECT_THAT(sync({{.added = listOf({lead("1", "x")})}}), ::testing::HasSubstr("broken outdated"));
    EXPECT_EQ(watermark(), "none");
}

TEST_F(RecordsSyncTest, WhatTheUserChangedStaysOnTheScreenUntilItIsSent) {
    fillLeads({{{"id", "1"}, {"Company", "mine"}, {"City", "old"}}, {{"id", "2"}, {"Company", "b"}}});
    auto stores = Stores::current();
    RecordTransactionManager queue(stores, [] {});
    Record edit("1", "Leads");
    edit.set("Company", "mine");
    Module module{.moduleName = "Leads", .apiName = "Leads_Api"};
    ASSERT_TRUE(queue.editRecord(edit, module));
    ASSERT_TRUE(queue.deleteRecord("5", module));
    sync({{.added = listOf({lead("5", "deleted here")}),
           .edited = R"([[["id","1"],["Company","theirs"],["City","new"]],[["id","2"],["Company","B"]]])"}});
    EXPECT_EQ(leads(), R"("1","mine","new";"2","B",null)");
}

TEST_F(RecordsSyncTest, WhatWentBeneathAnEditWithoutAnAnswerIsAskedForAgain) {
    fillLeads({{{"id", "1"}, {"Company", "mine"}}, {{"id", "2"}, {"Company", "b"}}});
    auto stores = Stores::current();
    Record edit("1", "Leads");
    edit.set("Company", "mine");
    auto queued = RecordTransactionManager(stores, [] {}).editRecord(edit, {.moduleName = "Leads", .apiName = "L"});
    ASSERT_TRUE(queued);
    const Page others{.edited = R"([[["id","2"],["Company","B"]]])"};
    const Page theirs{.edited = R"([[["id","1"],["Company","theirs"]]])", .info = R"("responsetime":60,"count":1)"};
    sync({theirs});
    EXPECT_EQ(watermark(), "60") << "the edit will reach the server after theirs";
    ASSERT_TRUE(stores.changeRegister()->noteSend(stores.changeRegister()->entries()->front().number));
    sync({others});
    EXPECT_EQ(watermark(), "100") << "a page without the record hides nothing";
    sync({{.edited = theirs.edited, .info = R"("responsetime":200,"count":1)"}});
    EXPECT_EQ(watermark(), "100");
    EXPECT_EQ(asked().substr(asked().rfind(' ') - 3), "100 0");
}

TEST_F(RecordsSyncTest, ADeleteIsAskedForAgainWhileAnAddWaitsForItsAnswer) {
    auto stores = Stores::current();
    auto lead = Record("NEW_000000001", "Leads");
    auto queued = RecordTransactionManager(stores, [] {}).addRecord(lead, {.moduleName = "Leads", .apiName = "L"});
    ASSERT_TRUE(queued);
    const Page deleted{.deleted = R"([["7"]])"};
    sync({deleted});
    EXPECT_EQ(watermark(), "100") << "the server cannot have the add";
    ASSERT_TRUE(stores.changeRegister()->noteSend(stores.changeRegister()->entries()->front().number));
    sync({{.deleted = deleted.deleted, .info = R"("responsetime":200,"count":1)"}});
    EXPECT_EQ(watermark(), "100") << "the deleted record may be the added one";
}

TEST_F(RecordsSyncTest, DependentRowsAndTagsComeWithRecordsThatAreHere) {
    makeModule("InventoryProducts", {field("InventoryProducts", "record_id"), field("InventoryProducts", "Quantity")});
    makeModule("Quotes",
               {field("Quotes", "Product_Details", T::subform), field("Quotes", "Tag"), field("Quotes", "City")});
    adapter().createTable("CREATE TABLE Tags_Records (tag_id, tag_name, module_name, record_id)");
    adapter().execute("INSERT INTO Tags_Records VALUES ('1', 'old', 'Quotes', '1')", std::nullopt);
    adapter().execute("INSERT INTO QuotesRecords (id, City) VALUES ('1', 'Bonn')", std::nullopt);
    auto quote = [](const std::string& id) {
        return R"([["id",")" + id + R"("],["Product_Details",[[["id",")" + id + R"(1"],["Quantity","3"]]]],)" +
               R"(["Tag",[[["id","7"],["name","new"]]]]])";
    };
    network->answer(bodyOf({.edited = listOf({quote("1"), quote("2")})}));
    usecase->syncRecords("Quotes");
    settle();
    EXPECT_EQ(cells("QuotesRecords", {"id", "City", "Product_Details", "Tag"}), R"("1","Bonn",1,1)");
    EXPECT_EQ(cells("InventoryProductsRecords", {"id", "Quantity", "record_id"}), R"("11","3","1")");
    EXPECT_EQ(cells("Tags_Records", {"tag_name", "record_id"}), R"("new","1")");
}

TEST_F(RecordsSyncTest, ARefusedRowCostsItselfAloneAndAFailedPageLeavesNoHalf) {
    adapter().dropTable("LeadsRecords");
    makeLeads({{"Company", T::text}, {"City", T::text}}, ", CHECK (Company <> 'bad')");
    fillLeads({{{"id", "1"}, {"Company", "a"}}, {{"id", "2"}, {"Company", "b"}}, {{"id", "3"}, {"Company", "c"}}});
    EXPECT_THAT(
        sync(
            {{.edited = R"([[["id","1"],["Company","A"]],[["id","2"],["Company","bad"]],[["id","3"],["City","C"]]])"}}),
        ::testing::HasSubstr("finished"));
    EXPECT_EQ(leads(), R"("1","A",null;"2","b",null;"3","c","C")");
    adapter().execute(
        "CREATE TRIGGER fails BEFORE UPDATE ON LeadsRecords WHEN new.Company = 'fails' BEGIN SELECT no_such(); END",
        std::nullopt);
    EXPECT_THAT(sync({{.edited = listOf({lead("1", "x"), lead("2", "fails")})}}),
                ::testing::HasSubstr("broken notStored"));
    EXPECT_EQ(leads(), R"("1","A",null;"2","b",null;"3","c","C")");
}

}  // namespace tarvo
