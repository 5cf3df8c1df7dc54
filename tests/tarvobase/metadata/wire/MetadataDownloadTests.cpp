#include <thread>

#include "platform/MainQueue.h"
#include "platform/Text.h"
#include "tarvobase/init_process/steps/InitMetadataDM.h"
#include "tarvobase/metadata/PopulateRelatedModulesDM.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/metadata/wire/MetadataNS.h"
#include "tarvobase/notification/BrenNotificationCenter.h"
#include "tarvobase/notification/ModuleChangedObserver.h"
#include "tarvobase/storage/InMemoryStorage.h"
#include "tarvobase/value_objects/module/ModuleInDatabase.h"
#include "tarvobase/value_objects/module/ModulesInMemory.h"
#include "tests/tarvobase/MetadataTables.h"
#include "tests/tarvobase/MetadataWire.h"
#include "tests/tarvobase/ServerFixture.h"

namespace tarvo {
namespace {

using Strings = std::vector<std::string>;

constexpr const char* sectionTables[] = {"MODULE_RELATED_LIST", "MODULE_LAYOUT_INFO", "LAYOUT_SPECIFIC_METADATA",
                                         "PICKLIST_METADATA",   "APP_SETTINGS",       "MODULE_SPECIFIC_METADATA"};

/// Counts the notices by the thread on which they arrive.
class ModuleListener final : public ModuleChangedObserver {
public:
    using ModuleChangedObserver::modulesAdded;
    void modulesAdded() override { ++(std::this_thread::get_id() == mainThread ? onMain : inBackground); }
    const std::thread::id mainThread = std::this_thread::get_id();
    std::atomic<int> onMain = 0;
    std::atomic<int> inBackground = 0;
};

/// Keeps the calls until the test answers them.
class HeldMetadataService final : public MetadataNSP {
public:
    struct Call {
        MetadataNetworkParams params;
        NetworkCompletion callback;
    };
    void getMetadata(const MetadataNetworkParams& params, NetworkCompletion callback) override {
        calls.push_back({params, std::move(callback)});
    }
    /// Answers a call with full metadata of its modules.
    void answer(std::size_t call) {
        ValueList entries;
        for (auto& module : calls[call].params.modules) entries.emplace_back(wire::entry(module.moduleName));
        auto callback = calls[call].callback;
        callback({.body = Data(wire::body(std::move(entries)))});
    }
    Strings asked() const {
        Strings names;
        for (auto& call : calls) names.push_back(namesOf(call.params.modules));
        return names;
    }
    std::deque<Call> calls;
};

class MetadataDownloadTest : public ServerTest {
protected:
    void SetUp() override {
        ServerTest::SetUp();
        createTables(metadataTables());
        BrenNotificationCenter::shared().add<ModuleChangedObserver>(listener);
    }
    std::shared_ptr<InitMetadataDM> step(const std::shared_ptr<DatabaseAdapter>& secondary,
                                         std::shared_ptr<MetadataNSP> service = nullptr) {
        if (!service) service = overNetwork<MetadataNS>();
        return InitMetadataDM::make(database, secondary, std::make_shared<BrenUserDefaults>(), service);
    }
    /// Downloads the modules with the scripted answers, and waits for the end.
    void download(const Strings& modules, const std::shared_ptr<DatabaseAdapter>& secondary = nullptr) {
        auto download = step(secondary ? secondary : database);
        std::atomic<bool> done = false;
        download->getMetaData(modulesNamed(modules), [&] { done = true; }, {});
        pump([&] { return done.load(); });
        settle();
    }
    void downloadAnswered(ValueList entries) {
        network->answer(wire::body(std::move(entries)));
        download({"Leads"});
    }
    std::string rowCounts() {
        std::string counts;
        for (auto table : sectionTables) counts += std::to_string(database->count(table, std::nullopt).value_or(-1));
        return counts;
    }
    std::shared_ptr<ModuleListener> listener = std::make_shared<ModuleListener>();
};

TEST_F(MetadataDownloadTest, AsksForModulesWithTheProfileOfTheUser) {
    configuration().getMetadataApiVersion = GetMetadataApiVersion::crm;
    auto users = Stores::over(database).users();
    auto profileAskedBy = [&](const std::optional<std::string>& user) {
        signIn(user);
        network->answer(wire::body({}));
        download({"Leads", "CustomModule1"});
        return network->calls().back().params->valueOf("profileid").textOr("");
    };
    EXPECT_EQ(profileAskedBy("1001"), "123") << "the user is not stored";
    users->storeUser({.id = "7", .BrenUID = "1001", .profileID = "P7"});
    EXPECT_EQ(profileAskedBy(std::nullopt), "123");
    EXPECT_EQ(profileAskedBy("1001"), "P7");
    auto call = network->calls().back();
    EXPECT_TRUE(call.request.url.ends_with("/crm/v5/getmetadatainfo")) << call.request.url;
    EXPECT_EQ(call.params->valueOf("module"), Value(ValueList{"Leads", "CustomModule1"}));
    EXPECT_EQ(call.params->valueOf("moduleAPI"), Value(ValueList{"Leads_API", "CustomModule1_API"}));
}

TEST_F(MetadataDownloadTest, StoresTheSameInBothNamings) {
    for (auto& naming : {FieldIdentifier::crmColumnNameIdentifier(), FieldIdentifier::fieldAPINameIdentifier()}) {
        configuration().fieldIdentifier = naming;
        downloadAnswered({wire::entry("Leads")});
        EXPECT_EQ(rowCounts(), "222234");
        EXPECT_EQ(column("SELECT field_api_name || additional_info FROM MODULE_SPECIFIC_METADATA WHERE module_name = "
                         "'Leads' AND crm_col_name = 'COL_F2'"),
                  (Strings{R"(Api_F2{"decimal_place":"2"})"}));
        EXPECT_EQ(column("SELECT settings_key || custom_settings FROM APP_SETTINGS WHERE is_default = 'true' "
                         "ORDER BY 1 LIMIT 1"),
                  (Strings{"businessCardLast_Name,Email"}));
    }
}

TEST_F(MetadataDownloadTest, ABadEntryLeavesTheOthers) {
    auto empty = wire::info("Tasks");
    empty.set("nodata", true);
    ValueMap refused{{"info", wire::info("Calls")},
                     {"error", ValueList{ValueMap{{"code", "NO"}, {"message", "private"}}}},
                     {"data", wire::sections("Calls")}};
    downloadAnswered({refused, wire::entry(empty, {}), ValueMap{{"info", empty}}, ValueMap{}, wire::entry("Leads")});
    EXPECT_EQ(rowCounts(), "222234");
    EXPECT_EQ(column("SELECT DISTINCT module_name FROM MODULE_LAYOUT_INFO"), (Strings{"Leads"}));
    EXPECT_TRUE(wasLogged("MetadataInfo of Calls could not be read: responseError"));
    EXPECT_FALSE(wasLogged("private"));
    EXPECT_TRUE(wasLogged("MetadataInfo Parsing completed for Leads"));
    EXPECT_TRUE(wasLogged("MetadataInfo Completed - success for Leads"));
}

TEST_F(MetadataDownloadTest, CreatesRecordTablesAndKeepsTheirStatements) {
    auto elsewhere = std::make_shared<KelvaDatabasePersistance>(StorageLocation::inMemory());
    ASSERT_TRUE(elsewhere->registerDB(std::nullopt).ok());
    elsewhere->createTable(metadataTables().front());
    ModuleInDatabase modules("MODULE_DETAILS", elsewhere);
    modules.storeModules(modulesNamed({"Leads", "Events", "Activities"}));
    const std::string tag = " , Tag TEXT COLLATE NOCASE";
    auto repeated = "CREATE TABLE ActivitiesRecords (_id INTEGER" + tag + " , Subject TEXT" + tag + tag + ")";
    auto once = "CREATE TABLE ActivitiesRecords (_id INTEGER" + tag + " , Subject TEXT)";
    const std::string lookups = "CREATE TABLE Events_LOOKUP (id TEXT)", views = "CREATE TABLE Invitees_CV (id TEXT)";
    auto events = wire::info("Events");
    events.set("tables", ValueList{ValueMap{{"module", "Events"},
                                            {"query", "CREATE TABLE EventsRecords (id TEXT)"},
                                            {"lookupRecordsTable", lookups},
                                            {"relatedListTable", ""}},
                                   ValueMap{{"module", "EventInvitees"},
                                            {"query", "CREATE TABLE broken"},
                                            {"customViewTable", views},
                                            {"relatedListTable", "CREATE TABLE Invitees_RL (id TEXT)"}}});
    network->answer(
        wire::body({wire::entryWithTables("Leads", {{"module", "Leads"}, {"query", repeated}}), wire::entry(events, {}),
                    wire::entryWithTables("Activities", {{"module", "Activities"}, {"query", repeated}})}));
    download({"Leads", "Events", "Activities"}, elsewhere);
    // An answer without statements leaves the stored ones.
    network->answer(
        wire::body({wire::entryWithTables("Leads", {{"module", "Leads"}, {"query", ""}}), wire::entry("Activities")}));
    download({"Leads"}, elsewhere);

    EXPECT_EQ(modules.getModuleByModuleName("Leads")->tableCreationQuery, repeated);
    EXPECT_EQ(modules.getModuleByModuleName("Activities")->tableCreationQuery, once);
    EXPECT_EQ(modules.getModuleByModuleName("Events")->tableCreationQuery,
              "CREATE TABLE EventsRecords (id TEXT)|" + lookups + "|CREATE TABLE broken|" + views +
                  "|CREATE TABLE Invitees_RL (id TEXT)");
    EXPECT_EQ(database->columnNames("ActivitiesRecords"), (Strings{"_id", "Tag", "Subject"}));
    for (auto table : {"EventsRecords", "Events_LOOKUP", "Invitees_CV", "Invitees_RL"})
        EXPECT_EQ(database->columnNames(table), (Strings{"id"})) << table;
    EXPECT_EQ(elsewhere->columnNames("EventsRecords"), (Strings{}));
    elsewhere->deregisterDB();
}

TEST_F(MetadataDownloadTest, ModulesInMemorySeeTheNewStatements) {
    ModuleInDatabase("MODULE_DETAILS", database).storeModules(modulesNamed({"Leads"}));
    ModulesInMemory memory(std::make_shared<InMemoryStorage>(),
                           std::make_shared<ModuleInDatabase>("MODULE_DETAILS", database));
    EXPECT_EQ(memory.getAllModules()->front().tableCreationQuery, "");
    downloadAnswered(
        {wire::entryWithTables("Leads", {{"module", "Leads"}, {"query", "CREATE TABLE LeadsRecords (id TEXT)"}})});
    EXPECT_EQ(memory.getAllModules()->front().tableCreationQuery, "CREATE TABLE LeadsRecords (id TEXT)");
}

TEST_F(MetadataDownloadTest, NoticesComeBeforeAndAfterSuccess) {
    auto download = step(database);
    network->fail(NetworkError::Kind::other);
    std::atomic<bool> done = false;
    download->getMetaData(modulesNamed({"Leads"}),
                          [&] {
                              // The first notice has arrived; the second one is not posted before this returns.
                              MainQueue::shared()->sync([] {});
                              EXPECT_EQ(listener->onMain, 1);
                              EXPECT_EQ(listener->inBackground, 0);
                              done = true;
                          },
                          {});
    pump([&] { return done.load(); });
    settle();
    EXPECT_EQ(listener->onMain, 1);
    EXPECT_EQ(listener->inBackground, 1);
    EXPECT_EQ(rowCounts(), "000000");
}

TEST_F(MetadataDownloadTest, DownloadsComeOneAfterAnotherEachWithItsOwnAnswer) {
    auto service = std::make_shared<HeldMetadataService>();
    auto step = this->step(database, service);
    Strings ends;
    auto ending = [&](const std::string& name) { return [&ends, name] { ends.push_back(name); }; };
    step->getMetaData(modulesNamed({"A"}),
                      [&] {
                          ends.push_back("first");
                          step->getMetaData(modulesNamed({"C"}), ending("third"), {});
                      },
                      {});
    step->getMetaData(modulesNamed({"B"}), ending("second"), {});
    EXPECT_EQ(service->asked(), (Strings{"A"}));
    for (std::size_t call = 0; call < 3; ++call) service->answer(call);
    EXPECT_EQ(service->asked(), (Strings{"A", "B", "C"}));
    EXPECT_EQ(ends, (Strings{"first", "second", "third"}));

    // Without module names all stored modules are downloaded; if none is stored, the download ends at once.
    step->getMetaData({}, ending("nothing stored"), {});
    EXPECT_EQ(ends.back(), "nothing stored");
    ModulesInMemory(std::make_shared<InMemoryStorage>(), std::make_shared<ModuleInDatabase>("MODULE_DETAILS", database))
        .storeModules(modulesNamed({"X", "Y"}));
    step->getMetaData({}, ending("all"), {});
    EXPECT_EQ(service->asked().back(), "X Y");

    // There is no callback after the step is released.
    step.reset();
    service->answer(service->calls.size() - 1);
    EXPECT_EQ(ends.back(), "nothing stored");
}

TEST_F(MetadataDownloadTest, FillsLookupColumnsInBothNamings) {
    auto listed = [](const std::string& module, ValueList relatedLists, ValueList lookups) {
        auto sections = wire::sections(module);
        sections[wire::relatedLists] = std::move(relatedLists);
        sections[wire::fields] = std::move(lookups);
        return wire::entry(wire::info(module), sections);
    };
    auto notALookup = wire::fieldRow("Notes", "Parent", "text");
    notALookup[13] = "se_module";
    auto leads = listed("Leads",
                        {wire::relatedListRow("R1", "Contacts"), wire::relatedListRow("R2", "Tasks"),
                         wire::relatedListRow("R3", "Attachments"), wire::relatedListRow("R4", "Notes")},
                        {wire::lookupRow("Leads", "Boss", "Leads", "R9"), notALookup});
    auto accounts =
        listed("Accounts", {wire::relatedListRow("R5", "Tasks"), wire::relatedListRow("R6", "Tasks")},
               {wire::lookupRow("Contacts", "Account", "Accounts", "R1"),
                wire::lookupRow("Tasks", "What", "se_module", ""), wire::lookupRow("Tasks", "Who", "Contacts", "R6")});

    auto filled = [&] { return column("SELECT lookup_column FROM MODULE_RELATED_LIST ORDER BY list_id"); };
    auto fill = [] { return PopulateRelatedModulesDM::make(Stores::current())->populateLookupColumn(); };
    const std::pair<FieldIdentifier, Strings> cases[] = {
        {FieldIdentifier::crmColumnNameIdentifier(), {"COL_Account", "COL_What", "SEID", "", "COL_What", "COL_Who"}},
        {FieldIdentifier::fieldAPINameIdentifier(),
         {"Api_Account", "Api_What", "Parent_Id", "", "Api_What", "Api_Who"}},
    };
    for (auto& [naming, expected] : cases) {
        configuration().fieldIdentifier = naming;
        downloadAnswered({leads, accounts});
        EXPECT_EQ(filled(), expected) << "in the commit of the metadata";
        runStatement("UPDATE MODULE_RELATED_LIST SET lookup_column = ''");
        EXPECT_TRUE(fill());
        EXPECT_EQ(filled(), expected);
    }

    // Without lookup fields no row is written, and without a database the call fails.
    database->execute("DELETE FROM MODULE_SPECIFIC_METADATA WHERE field_type = 'lookup'", std::nullopt);
    database->execute("UPDATE MODULE_RELATED_LIST SET lookup_column = 'kept'", std::nullopt);
    EXPECT_TRUE(fill());
    EXPECT_EQ(filled(), Strings(6, "kept"));
    configuration().databaseAdapter = nullptr;
    EXPECT_FALSE(fill());
}

}  // namespace
}  // namespace tarvo
