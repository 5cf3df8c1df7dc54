#include "platform/Clock.h"
#include "platform/Json.h"
#include "tarvobase/get_metadata/GetUsersUseCase.h"
#include "tarvobase/init_process/StoreOrgsUseCase.h"
#include "tarvobase/init_process/parsers/InitBlocks.h"
#include "tarvobase/init_process/parsers/InitSettingsParser.h"
#include "tarvobase/init_process/steps/AppInitDataManager.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/value_objects/account/OrganisationInDatabase.h"
#include "tarvobase/value_objects/account/OrganisationInUserDefaults.h"
#include "tests/tarvobase/AccountTables.h"
#include "tests/tarvobase/ServerFixture.h"

namespace tarvo {
namespace {

using ::testing::ElementsAre;
using Counts = std::map<std::string, std::size_t>;

/// The blocks of a complete answer except for the tables, as the server sends them.
constexpr const char* blocks = R"({
    "dateTimeFormat": ["dd/MM/yyyy", "HH:mm"],
    "activeModules": [["Leads", "Lead", "Leads", "Leads_API", "3", "default"],
                      ["Deals", "Deal", "Deals", "Deals_API", "4", "web"]],
    "userDetails": ["1001", "Europe/Berlin", "", "US|en", "", "", "", "", ["a@crm.test", "b@crm.test", "c@crm.test"]],
    "activeUsers": [["u1", "Ada", "Byron", "Ada Byron", "1001", "ada@crm.test", "active", "CEO", "true",
                     "Administrator", "p1", true, "dd/MM/yyyy"],
                    ["u2", "Bo", "Lee", "Bo Lee", "2002", "bo@crm.test", "active", "CEO", "true", "Standard", "p2", true]],
    "settings": ["v0", "v1", "v2", "v3", "v4", "v5", "v6", "v7", "v8", "v9", "v10", "v11", "v12", "v13", "v14", "v15",
                 [["Leads", "true", "2000", ["shown", "too"], "searched", ["A", "asc", "", "desc", "C"]],
                  ["Accounts", "false", "10", "x", "y", [], "100"]],
                 ["supported", "other"], ["who", "other"], ["what", "other"]],
    "companyInfo": [["name", "Acme"]],
    "VestraOrgs": [["1", "Acme", true], ["2", "Bolt", false]]})";

/// Returns the blocks of a complete answer by name.
ValueMap completeAnswer() {
    auto tables = accountTables();
    auto answer = *json::parse(blocks)->asMap();
    answer.set("tables", ValueList(tables.begin(), tables.end()));
    return answer;
}

std::string body(const ValueMap& blocks, std::int64_t responseTime = 0) {
    ValueList result;
    for (auto& [module, data] : blocks)
        result.emplace_back(ValueMap{{"info", ValueMap{{"module", module}}}, {"data", data}});
    return *json::write(ValueMap{
        {"response", ValueMap{{"result", result}, {"responseInfo", ValueMap{{"responsetime", responseTime}}}}}});
}

class InitDataTest : public ServerTest {
protected:
    void SetUp() override {
        ServerTest::SetUp();
        defaults = std::make_shared<BrenUserDefaults>();
    }
    /// Runs the step with one answer. Returns whether the step reported that it is complete; nullopt if it did not end.
    std::optional<bool> run(const std::string& answer) {
        network->answer(answer);
        auto step = AppInitDataManager::make(database, defaults, overNetwork<AppInitNetworkService>());
        step->delegate = listener;
        step->errorResponder = listener;
        step->execute();
        settle();
        auto ended = std::exchange(listener->ended, "");
        return ended.empty() ? std::nullopt : std::optional(ended == std::string(rawText(Process::appInit)) + " true");
    }

    /// Returns how many entries of each block can be read back.
    Counts storedCounts() {
        auto stores = Stores::over(database);
        auto sizeOf = [](auto list) { return list ? list->size() : 0; };
        return {{"dateTimeFormat", DateTimeInUserDefaults(defaults).getTimeFormat() == "HH:mm"},
                {"activeModules", sizeOf(stores.modules()->getAllModules())},
                {"userDetails", UserDetailsInUserDefaults(defaults).getUserDetails().has_value()},
                {"activeUsers", sizeOf(stores.users()->getUsers())},
                {"settings", sizeOf(stores.settings()->getAllSettings())},
                {"companyInfo", sizeOf(CompanyInfoInDatabase("COMPANY_DETAILS", database).getCompanyInfo())},
                {"VestraOrgs", sizeOf(OrganisationInUserDefaults(defaults).getOrganisations())}};
    }

    std::shared_ptr<StepListener> listener = std::make_shared<StepListener>();
    std::shared_ptr<UserDefaultsProtocol> defaults;
};

// Settings: 16 texts, 3 lists and the order of names of the application; 4 texts and 3 sort levels of Leads; 4 texts
// and the reportees of Accounts.
const Counts completeCounts{{"dateTimeFormat", 1}, {"activeModules", 2}, {"userDetails", 1}, {"activeUsers", 2},
                            {"settings", 32},      {"companyInfo", 1},   {"VestraOrgs", 2}};

TEST_F(InitDataTest, StoresEveryBlockOfTheAccount) {
    EXPECT_EQ(run(body(completeAnswer())), true);
    EXPECT_EQ(storedCounts(), completeCounts);
    auto users = Stores::over(database).users();
    auto user = users->getUserWithBrenUID().value();
    EXPECT_EQ(user.id + " " + *user.dateFormat, "u1 dd/MM/yyyy");
    EXPECT_TRUE(user.confirm);
    EXPECT_EQ(user.isLoggedInUser, true);
    EXPECT_EQ(user.timeFormat, std::nullopt);
    EXPECT_EQ(users->getUsersWithBrenUID({"2002"})->front().id, "u2");
    EXPECT_EQ(users->getUsersWithUserId({"u2", "x"})->size(), 1u);
    EXPECT_EQ(UserDetailsInUserDefaults(defaults).getUserDetails(),
              (UserDetails{"1001", "Europe/Berlin", "US", "en", "a@crm.test", "b@crm.test"}));
    signIn("2002");
    EXPECT_EQ(UserDetailsInUserDefaults(defaults).getUserDetails(), std::nullopt);
    EXPECT_EQ(OrganisationInUserDefaults(defaults).getOrganisations(), std::nullopt);
}

TEST_F(InitDataTest, ReportsARequestWithoutAnAnswerOnce) {
    EXPECT_EQ(run("not an envelope"), std::nullopt);
    network->fail(NetworkError::Kind::timeout);
    EXPECT_EQ(run(""), std::nullopt);
    signIn("1001", std::nullopt);
    EXPECT_EQ(run(""), std::nullopt);
    EXPECT_EQ(listener->notices, "parsingError;networkResponseError scripted;noAuthtoken 1001;");
}

TEST_F(InitDataTest, ParsesUserDetails) {
    auto details = [](ValueList emails, Value locale = "US|en") {
        return ValueList{"1", "Zone", 0, std::move(locale), 0, 0, 0, 0, std::move(emails)};
    };
    EXPECT_EQ(InitUserDetailsParser::parse(details({"a", "b"}))->secondEmail, std::nullopt);
    EXPECT_EQ(InitUserDetailsParser::parse(details({}, "US"))->language, "");
    EXPECT_EQ(InitUserDetailsParser::parse(details({}, 5))->country, "");
    EXPECT_EQ(InitUserDetailsParser::parse(ValueList{Value(details({"a"}))})->timeZone, "Zone")
        << "a list that contains only the row";
    EXPECT_FALSE(InitUserDetailsParser::parse(ValueList{"1", "Zone"}));
}

TEST_F(InitDataTest, ParsesSortLevels) {
    using S = SettingName;
    using Levels = std::vector<std::pair<S, std::string>>;
    const std::pair<Value, Levels> cases[] = {
        {ValueList{"A", "asc", "B"}, {{S::groupBy, "A,asc"}, {S::primarySort, ""}}},
        {ValueList{"", "asc", "B", "desc"}, {{S::groupBy, ""}, {S::primarySort, "B,desc"}}},
        {ValueList{"A", "1", "B", "2", "C", "3", "D", "4"},
         {{S::groupBy, "A,1"}, {S::primarySort, "B,2"}, {S::secondarySort, "C,3"}}},
        {ValueList{}, {}},
        {ValueList{"A", 1}, {}},
        {"A,asc", {}},
    };
    for (auto& [block, expected] : cases) {
        ValueList row(16, Value(0));
        row.emplace_back(ValueList{Value(ValueList{"Leads", 0, 0, 0, 0, block, "7"})});
        Levels levels;
        const auto settings = InitSettingsParser::parse(row);
        for (auto& setting : *settings)
            if (setting.moduleName == "Leads") levels.emplace_back(setting.settingsKey, setting.customSettings);
        EXPECT_EQ(levels, expected) << json::write(block).value_or("");
    }
}

TEST_F(InitDataTest, MakesSettingsInTheOrderOfTheirPositionsFromTextsAndLists) {
    using S = SettingName;
    const auto row = completeAnswer().valueOf("settings");
    auto settings = *InitSettingsParser::parse(*row.asList());
    std::vector<SettingName> ofLeads, ofAccounts;
    for (auto& setting : settings)
        if (setting.moduleName != "Settings")
            (setting.moduleName == "Leads" ? ofLeads : ofAccounts).push_back(setting.settingsKey);
    EXPECT_THAT(ofLeads, ElementsAre(S::downloadRecords, S::userMaxRecords, S::search, S::display, S::groupBy,
                                     S::primarySort, S::secondarySort));
    EXPECT_THAT(ofAccounts,
                ElementsAre(S::downloadRecords, S::userMaxRecords, S::search, S::display, S::maxReporteesCount));
    EXPECT_EQ(settings[3], (Settings{"Settings", S::fontSize, "v3", "v3", true}));
    EXPECT_EQ(settings[19], (Settings{"Leads", S::display, "shown,too", "shown,too", true}));
    EXPECT_EQ(settings.back(),
              (Settings{"Settings", S::sortOrderPreference, "First Name,Last Name", "Last Name,First Name", true}));
}

TEST_F(InitDataTest, TheCurrentOrganisationIsTheDefault) {
    OrganisationInUserDefaults organisations(defaults);
    auto defaultsOf = [&] {
        std::vector<bool> flags;
        auto list = organisations.getOrganisations().value();
        for (auto& one : list) flags.push_back(one.isAppDefault);
        return flags;
    };
    run(body(completeAnswer()));
    EXPECT_THAT(defaultsOf(), ElementsAre(true, false));
    organisations.setCurrentOrganisation(Organisation{"2", "Bolt", false, false});
    run(body(completeAnswer()));
    EXPECT_THAT(defaultsOf(), ElementsAre(false, true));
    EXPECT_TRUE(organisations.getOrganisations()->front().isWebDefault);
}

TEST_F(InitDataTest, ReusesAnAnswerForAMinuteForTheSameAccountAndOrganisation) {
    constexpr std::int64_t received = 1'700'000'000;
    auto runLater = [&](std::int64_t seconds) {
        platform::Clock::set(platform::Clock::WallTime(std::chrono::seconds(received + seconds)));
        EXPECT_EQ(run(body(completeAnswer(), received * 1000)), true);
        return network->calls().size();
    };
    EXPECT_EQ(runLater(0), 1u);
    EXPECT_EQ(runLater(59), 1u);
    EXPECT_EQ(runLater(60), 2u);
    signIn("2002");
    EXPECT_EQ(runLater(30), 3u);
    EXPECT_EQ(runLater(-1), 4u);
    configuration().currentOrgID = "other";
    EXPECT_EQ(runLater(0), 5u);
}

TEST_F(InitDataTest, AnAnswerWithoutTablesIsNotReused) {
    auto withoutTables = completeAnswer();
    withoutTables.remove("tables");
    EXPECT_EQ(run(body(withoutTables, platform::Clock::secondsSince1970() * 1000)), std::nullopt);
    EXPECT_EQ(run(body(completeAnswer())), true) << "a second attempt asks the server again";
    EXPECT_EQ(network->calls().size(), 2u);
}

TEST_F(InitDataTest, BlocksAndRowsThatAreLeftOutAreLogged) {
    auto answer = completeAnswer();
    answer.set("companyInfo", ValueList{"no row"});
    answer.set("userDetails", "no list");
    answer.set("activeModules", ValueList{ValueList{"Leads", "Lead"}, ValueList{""}, "no row"});
    answer.set("nobodyKnows", ValueList{});
    EXPECT_EQ(run(body(answer)), true);
    EXPECT_TRUE(wasLogged("block companyInfo is left out"));
    EXPECT_TRUE(wasLogged("block userDetails is left out"));
    EXPECT_TRUE(wasLogged("2 rows of block activeModules are left out"));
    EXPECT_FALSE(wasLogged("nobodyKnows")) << "a block of newer servers";
}

TEST_F(InitDataTest, AnAnswerThatIsNotStoredEndsTheStep) {
    setFull(*database, true);
    EXPECT_EQ(run(body(completeAnswer())), false);
    EXPECT_EQ(DateTimeInUserDefaults(defaults).getTimeFormat(), std::nullopt);
    setFull(*database, false);
    EXPECT_EQ(run(body(completeAnswer())), true);
    EXPECT_EQ(storedCounts(), completeCounts);
}

struct OrgsRecorder final : StoreOrgsUseCaseDelegate {
    void orgsStored() override { events += "stored "; }
    void noOrgsFetched() override { events += "none "; }
    std::string events;
};

TEST_F(InitDataTest, StoreOrgsStoresNothingElseAndReportsWhatIsNotStored) {
    auto recorder = std::make_shared<OrgsRecorder>();
    auto store = [&](const std::string& answer, std::shared_ptr<OrganisationPersistance> organisations) {
        network->answer(answer);
        auto service = overNetwork<AppInitNetworkService>();
        auto usecase = StoreOrgsUseCase::make(std::make_shared<StoreOrgsDataManager>(organisations, service));
        usecase->delegate = recorder;
        usecase->storeOrgs();
        settle();
    };
    auto organisations = std::make_shared<OrganisationInUserDefaults>();
    auto without = completeAnswer();
    without.remove("VestraOrgs");
    store(body(completeAnswer()), organisations);
    store(body(without), organisations);
    store("", organisations);
    auto missingTable = std::make_shared<OrganisationInDatabase>("ORGANISATIONS", database, defaults);
    store(body(completeAnswer()), missingTable);
    EXPECT_EQ(recorder->events, "stored none none none ");
    EXPECT_EQ(organisations->getOrganisations()->size(), 2u);
    EXPECT_EQ(UserDetailsInUserDefaults(defaults).getUserDetails(), std::nullopt);
}

struct UsersRecorder final : GetUsersUseCaseDelegate {
    void usersFetched(const std::vector<User>& users) override {
        for (auto& user : users) names.push_back(user.name);
    }
    std::vector<std::string> names;
};

TEST_F(InitDataTest, GetUsersUseCaseSortsByName) {
    database->createTable(accountTables()[1]);
    auto recorder = std::make_shared<UsersRecorder>();
    auto usecase = std::make_shared<GetUsersUseCase>();
    usecase->delegate = recorder;
    usecase->dataManager->storeUsers(
        {{.id = "1", .name = "zoe"}, {.id = "2", .name = "Ada"}, {.id = "3", .name = "Élan"}});
    usecase->getUsers();
    settle();
    EXPECT_THAT(recorder->names, ElementsAre("Ada", "Élan", "zoe"));
}

}  // namespace
}  // namespace tarvo
