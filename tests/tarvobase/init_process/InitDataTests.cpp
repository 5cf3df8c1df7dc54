#include "platform/Clock.h"
#include "platform/Json.h"
#include "tarvobase/get_metadata/GetModulesUC.h"
#include "tarvobase/get_metadata/GetSettingsUseCase.h"
#include "tarvobase/get_metadata/GetUsers.h"
#include "tarvobase/get_metadata/GetUsersUseCase.h"
#include "tarvobase/init_process/StoreOrgsUseCase.h"
#include "tarvobase/init_process/parsers/InitBlocks.h"
#include "tarvobase/init_process/parsers/InitSettingsParser.h"
#include "tarvobase/init_process/steps/AppInitDataManager.h"
#include "tarvobase/value_objects/account/OrganisationInDatabase.h"
#include "tarvobase/value_objects/account/OrganisationInUserDefaults.h"
#include "tests/tarvobase/AccountTables.h"
#include "tests/tarvobase/Fixture.h"
#include "tests/tarvobase/NoticeListener.h"

namespace tarvo {
namespace {

using ::testing::ElementsAre;
using Counts = std::map<std::string, std::size_t>;

ValueList settingsRow() {
    ValueList row;
    for (int position = 0; position < 16; ++position) row.emplace_back("v" + std::to_string(position));
    row.emplace_back(ValueList{
        ValueList{"Leads", "true", "2000", ValueList{"shown", "too"}, "searched",
                  ValueList{"A", "asc", "", "desc", "C"}},
        ValueList{"Accounts", "false", "10", "x", "y", ValueList{}, "100"},
    });
    for (auto list : {"supported", "who", "what"}) row.emplace_back(ValueList{list, "other"});
    return row;
}

ValueList userRow(const std::string& id, const std::string& account) {
    return {id,    "Ada",  "Byron",         "Ada Byron", account, "ada@crm.test", "active",
            "CEO", "true", "Administrator", "p1",        true,    "dd/MM/yyyy"};
}

/// Returns the blocks of a complete answer by name.
ValueMap completeAnswer() {
    auto tables = accountTables();
    ValueList emails{"a@crm.test", "b@crm.test", "c@crm.test"};
    return {{"tables", ValueList(tables.begin(), tables.end())},
            {"dateTimeFormat", ValueList{"dd/MM/yyyy", "HH:mm"}},
            {"activeModules", ValueList{ValueList{"Leads", "Lead", "Leads", "Leads_API", "3", "default"},
                                        ValueList{"Deals", "Deal", "Deals", "Deals_API", "4", "web"}}},
            {"userDetails", ValueList{"1001", "Europe/Berlin", "", "US|en", "", "", "", "", emails}},
            {"activeUsers", ValueList{userRow("u1", "1001"), userRow("u2", "2002")}},
            {"settings", settingsRow()},
            {"companyInfo", ValueList{Value(ValueList{"name", "Acme"})}},
            {"VestraOrgs", ValueList{ValueList{"1", "Acme", true}, ValueList{"2", "Bolt", false}}}};
}

std::string body(const ValueMap& blocks, std::int64_t responseTime = 0) {
    ValueList result;
    for (auto& [module, data] : blocks)
        result.emplace_back(ValueMap{{"info", ValueMap{{"module", module}}}, {"data", data}});
    return *json::write(ValueMap{
        {"response", ValueMap{{"result", result}, {"responseInfo", ValueMap{{"responsetime", responseTime}}}}}});
}

class SettingsReceiver final : public GetSettingsUseCaseDelegate {
public:
    void settingsFetched(const std::vector<Settings>& settings) override { fetched = settings; }
    std::vector<Settings> fetched;
};

class CompletionCounter final : public DownloadProgressible {
public:
    void didComplete(Downloadable&, bool status) override { completed += status ? 1 : 100; }
    void progressDidUpdate(Downloadable&, int, int) override {}
    int completed = 0;
};

class FailureRecorder final : public NoticeListener<CommonErrorRelay> {
public:
    std::string notices;

private:
    void noticed(const std::string& notice) override { notices += notice + ";"; }
};

class InitDataTest : public FoundationTest {
protected:
    void SetUp() override {
        FoundationTest::SetUp();
        defaults = std::make_shared<BrenUserDefaults>();
        adapter = openDatabase();
    }

    /// Runs the step with one answer. Returns how often the step reported its completion.
    int run(const std::string& answer) {
        network->answer(answer);
        auto service = std::make_shared<AppInitNetworkService>();
        service->setNetworkAdapter(network);
        auto step = AppInitDataManager::make(adapter, defaults, service);
        auto counter = std::make_shared<CompletionCounter>();
        step->delegate = counter;
        step->errorResponder = failures;
        step->execute();
        settle();
        return counter->completed;
    }

    template <class UC>
    std::optional<typename UC::Response> answerOf(typename UC::Request request) {
        std::optional<typename UC::Response> answer;
        auto usecase = std::make_shared<UC>();
        usecase->execute(std::move(request), [&](auto* response, auto*) {
            if (response) answer = *response;
        });
        settle();
        return answer;
    }

    std::vector<Settings> settings() {
        auto receiver = std::make_shared<SettingsReceiver>();
        auto usecase = std::make_shared<GetSettingsUseCase>();
        usecase->delegate = receiver;
        usecase->getAllSettings();
        settle();
        return receiver->fetched;
    }

    /// Returns how many entries of each block can be read back.
    Counts storedCounts() {
        auto modules = answerOf<GetModulesUC>(GetModulesUC::Request({"Leads", "Deals"}));
        auto users = answerOf<GetUsers>(GetUsers::Request::all());
        CompanyInfoInDatabase company("COMPANY_DETAILS", adapter);
        return {{"dateTimeFormat", DateTimeInUserDefaults(defaults).getTimeFormat() == "HH:mm"},
                {"activeModules", modules ? modules->modules.size() : 0},
                {"userDetails", UserDetailsInUserDefaults(defaults).getUserDetails().has_value()},
                {"activeUsers", users ? users->users.size() : 0},
                {"settings", settings().size()},
                {"companyInfo", company.getCompanyInfo().success().value_or(std::vector<CompanyInfo>()).size()},
                {"VestraOrgs",
                 OrganisationInUserDefaults(defaults).getOrganisations().value_or(std::vector<Organisation>()).size()}};
    }

    std::shared_ptr<FailureRecorder> failures = std::make_shared<FailureRecorder>();
    std::shared_ptr<ScriptedNetworkAdapter> network = std::make_shared<ScriptedNetworkAdapter>();
    std::shared_ptr<UserDefaultsProtocol> defaults;
    std::shared_ptr<KelvaDatabasePersistance> adapter;
};

// Settings: 16 texts, 3 lists and the order of names of the application; 4 texts and 3 sort levels of Leads; 4 texts
// and the reportees of Accounts.
const Counts completeCounts{{"dateTimeFormat", 1}, {"activeModules", 2}, {"userDetails", 1}, {"activeUsers", 2},
                            {"settings", 32},      {"companyInfo", 1},   {"VestraOrgs", 2}};

TEST_F(InitDataTest, StoresEveryBlock) {
    EXPECT_EQ(run(body(completeAnswer())), 1);
    EXPECT_EQ(storedCounts(), completeCounts);
}

TEST_F(InitDataTest, StoresUsersWithAllMembers) {
    run(body(completeAnswer()));
    auto user = answerOf<GetUser>(GetUser::Request::currentUser())->user;
    EXPECT_EQ(user.id, "u1");
    EXPECT_TRUE(user.confirm);
    EXPECT_EQ(user.isLoggedInUser, true);
    EXPECT_EQ(user.dateFormat, "dd/MM/yyyy");
    EXPECT_EQ(user.timeFormat, std::nullopt);
}

TEST_F(InitDataTest, FindsStoredUsers) {
    run(body(completeAnswer()));
    EXPECT_EQ(answerOf<GetUser>(GetUser::Request::brenUID("2002"))->user.id, "u2");
    EXPECT_FALSE(answerOf<GetUser>(GetUser::Request::userId("nobody")));
    EXPECT_EQ(answerOf<GetUsers>(GetUsers::Request::userIds({"u2", "x"}))->users.size(), 1u);
}

TEST_F(InitDataTest, SettingsOfAnAccountAreNotReadForAnother) {
    run(body(completeAnswer()));
    auto details = UserDetailsInUserDefaults(defaults).getUserDetails();
    EXPECT_EQ(details, (UserDetails{"1001", "Europe/Berlin", "US", "en", "a@crm.test", "b@crm.test"}));
    signIn("2002");
    EXPECT_EQ(UserDetailsInUserDefaults(defaults).getUserDetails(), std::nullopt);
    EXPECT_EQ(OrganisationInUserDefaults(defaults).getOrganisations(), std::nullopt);
}

TEST_F(InitDataTest, ReportsAnUnreadableAnswerOnce) {
    EXPECT_EQ(run("not an envelope"), 0);
    EXPECT_EQ(failures->notices, "parsingError;");
}

TEST_F(InitDataTest, ReportsATransportErrorOnce) {
    network->fail(NetworkError::Kind::timeout);
    EXPECT_EQ(run(""), 0);
    EXPECT_EQ(failures->notices, "networkResponseError;");
}

TEST_F(InitDataTest, ReportsAMissingTokenOnce) {
    signIn("1001", std::nullopt);
    EXPECT_EQ(run(""), 0);
    EXPECT_EQ(failures->notices, "noAuthtoken 1001;");
}

TEST_F(InitDataTest, ParsesUserDetails) {
    auto details = [](ValueList emails, Value locale = "US|en") {
        return ValueList{"1", "Zone", 0, std::move(locale), 0, 0, 0, 0, std::move(emails)};
    };
    EXPECT_EQ(InitUserDetailsParser::parse(details({"a", "b"}))->secondEmail, std::nullopt);
    EXPECT_EQ(InitUserDetailsParser::parse(details({"a", "b", "c"}))->secondEmail, "b");
    EXPECT_EQ(InitUserDetailsParser::parse(details({}))->email, "");
    EXPECT_EQ(InitUserDetailsParser::parse(details({}, "US"))->language, "");
    EXPECT_EQ(InitUserDetailsParser::parse(details({}, 5))->country, "");
    EXPECT_EQ(InitUserDetailsParser::parse(ValueList{Value(details({"a"}))})->timeZone, "Zone")
        << "a list that contains only the row";
    EXPECT_FALSE(InitUserDetailsParser::parse(ValueList{"1", "Zone"}));
}

TEST_F(InitDataTest, ParsesSortLevels) {
    using S = SettingName;
    struct {
        Value block;
        std::vector<std::pair<S, std::string>> levels;
    } cases[] = {
        {ValueList{"A", "asc", "B", "desc", "C", "asc"},
         {{S::groupBy, "A,asc"}, {S::primarySort, "B,desc"}, {S::secondarySort, "C,asc"}}},
        {ValueList{"A", "asc", "B"}, {{S::groupBy, "A,asc"}, {S::primarySort, ""}}},
        {ValueList{"", "asc", "B", "desc"}, {{S::groupBy, ""}, {S::primarySort, "B,desc"}}},
        {ValueList{"A", "1", "B", "2", "C", "3", "D", "4"},
         {{S::groupBy, "A,1"}, {S::primarySort, "B,2"}, {S::secondarySort, "C,3"}}},
        {ValueList{}, {}},
        {ValueList{"A", 1}, {}},
        {"A,asc", {}},
    };
    for (auto& one : cases) {
        ValueList row(16, Value(0));
        row.emplace_back(ValueList{Value(ValueList{"Leads", 0, 0, 0, 0, one.block, "7"})});
        std::vector<std::pair<S, std::string>> levels;
        auto settings = InitSettingsParser::parse(row).value();
        for (auto& setting : settings)
            if (setting.moduleName == "Leads") levels.emplace_back(setting.settingsKey, setting.customSettings);
        EXPECT_EQ(levels, one.levels) << json::write(one.block).value_or("");
    }
}

TEST_F(InitDataTest, MakesSettingsInTheOrderOfTheirPositions) {
    auto settings = *InitSettingsParser::parse(settingsRow());
    std::vector<SettingName> ofLeads;
    for (auto& setting : settings) {
        if (setting.moduleName == "Leads") ofLeads.push_back(setting.settingsKey);
        EXPECT_TRUE(setting.isDefault);
    }
    using S = SettingName;
    EXPECT_THAT(ofLeads, ElementsAre(S::downloadRecords, S::userMaxRecords, S::search, S::display, S::groupBy,
                                     S::primarySort, S::secondarySort));
}

TEST_F(InitDataTest, MakesSettingsFromTextsAndLists) {
    using S = SettingName;
    auto settings = *InitSettingsParser::parse(settingsRow());
    EXPECT_EQ(settings[3], (Settings{"Settings", S::fontSize, "v3", "v3", true}));
    EXPECT_EQ(settings[19], (Settings{"Leads", S::display, "shown,too", "shown,too", true}));
    EXPECT_EQ(settings.back(),
              (Settings{"Settings", S::sortOrderPreference, "First Name,Last Name", "Last Name,First Name", true}));
    EXPECT_EQ(std::count_if(
                  settings.begin(), settings.end(),
                  [](auto& one) { return one.settingsKey == S::maxReporteesCount && one.defaultSettings == "100"; }),
              1);
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

TEST_F(InitDataTest, ReusesAnAnswerForAMinuteForTheSameAccount) {
    constexpr std::int64_t received = 1'700'000'000;
    using std::chrono::milliseconds;
    platform::Clock::set(platform::Clock::WallTime(milliseconds(received * 1000)));
    run(body(completeAnswer(), received * 1000 + 999));
    struct {
        std::int64_t later;
        std::string account;
        std::size_t requests;
    } cases[] = {{30, "1001", 1}, {59, "1001", 1}, {60, "1001", 2}, {30, "2002", 3}, {-1, "2002", 4}};
    for (auto& one : cases) {
        platform::Clock::set(platform::Clock::WallTime(milliseconds((received + one.later) * 1000)));
        signIn(one.account);
        EXPECT_EQ(run(body(completeAnswer(), received * 1000)), 1);
        EXPECT_EQ(network->calls().size(), one.requests) << one.later << " s later, account " << one.account;
    }
}

TEST_F(InitDataTest, AnAnswerOfOneOrganisationIsNotReusedForAnother) {
    run(body(completeAnswer(), platform::Clock::secondsSince1970() * 1000));
    configuration().currentOrgID = "other";
    run(body(completeAnswer()));
    EXPECT_EQ(network->calls().size(), 2u);
}

TEST_F(InitDataTest, AnAnswerWithoutTablesIsNotReused) {
    auto withoutTables = completeAnswer();
    withoutTables.remove("tables");
    EXPECT_EQ(run(body(withoutTables, platform::Clock::secondsSince1970() * 1000)), 0);
    EXPECT_EQ(run(body(completeAnswer())), 1) << "a second attempt asks the server again";
    EXPECT_EQ(network->calls().size(), 2u);
}

TEST_F(InitDataTest, BlocksAndRowsThatAreLeftOutAreLogged) {
    auto answer = completeAnswer();
    answer.set("companyInfo", ValueList{"no row"});
    answer.set("userDetails", "no list");
    answer.set("activeModules", ValueList{ValueList{"Leads", "Lead"}, ValueList{""}, "no row"});
    answer.set("nobodyKnows", ValueList{});
    EXPECT_EQ(run(body(answer)), 1);
    EXPECT_TRUE(wasLogged("block companyInfo is left out"));
    EXPECT_TRUE(wasLogged("block userDetails is left out"));
    EXPECT_TRUE(wasLogged("2 rows of block activeModules are left out"));
    EXPECT_FALSE(wasLogged("nobodyKnows")) << "a block of newer servers";
}

TEST_F(InitDataTest, AnAnswerThatIsNotStoredEndsTheStep) {
    setFull(*adapter, true);
    EXPECT_EQ(run(body(completeAnswer())), 100);
    EXPECT_EQ(DateTimeInUserDefaults(defaults).getTimeFormat(), std::nullopt);
    setFull(*adapter, false);
    EXPECT_EQ(run(body(completeAnswer())), 1);
    EXPECT_EQ(storedCounts(), completeCounts);
}

class OrgsRecorder final : public StoreOrgsUseCaseDelegate {
public:
    void orgsStored() override { events += "stored "; }
    void noOrgsFetched() override { events += "none "; }
    std::string events;
};

TEST_F(InitDataTest, StoreOrgsStoresNothingElse) {
    auto recorder = std::make_shared<OrgsRecorder>();
    auto store = [&](const std::string& answer) {
        network->answer(answer);
        auto service = std::make_shared<AppInitNetworkService>();
        service->setNetworkAdapter(network);
        auto usecase = StoreOrgsUseCase::make(
            std::make_shared<StoreOrgsDataManager>(std::make_shared<OrganisationInUserDefaults>(), service));
        usecase->delegate = recorder;
        usecase->storeOrgs();
        settle();
    };
    auto without = completeAnswer();
    without.remove("VestraOrgs");
    store(body(completeAnswer()));
    store(body(without));
    store("");
    EXPECT_EQ(recorder->events, "stored none none ");
    EXPECT_EQ(OrganisationInUserDefaults().getOrganisations()->size(), 2u);
    EXPECT_EQ(UserDetailsInUserDefaults(defaults).getUserDetails(), std::nullopt);
}

TEST_F(InitDataTest, OrganisationsThatAreNotStoredAreReported) {
    auto recorder = std::make_shared<OrgsRecorder>();
    auto service = std::make_shared<AppInitNetworkService>();
    service->setNetworkAdapter(network);
    network->answer(body(completeAnswer()));
    auto missingTable = std::make_shared<OrganisationInDatabase>("ORGANISATIONS", adapter, defaults);
    auto usecase = StoreOrgsUseCase::make(std::make_shared<StoreOrgsDataManager>(missingTable, service));
    usecase->delegate = recorder;
    usecase->storeOrgs();
    settle();
    EXPECT_EQ(recorder->events, "none ");
}

class UsersRecorder final : public GetUsersUseCaseDelegate {
public:
    void userFetched(const User& user) override { events += user.id + " "; }
    void usersFetched(const std::vector<User>& users) override {
        for (auto& user : users) events += user.name + " ";
    }
    void unableToFetchUsers() override { events += "none "; }
    std::string events;
};

TEST_F(InitDataTest, GetUsersUseCaseSortsByName) {
    auto recorder = std::make_shared<UsersRecorder>();
    auto usecase = std::make_shared<GetUsersUseCase>();
    usecase->delegate = recorder;
    usecase->getUsers();
    settle();
    EXPECT_EQ(std::exchange(recorder->events, ""), "none ") << "there is no table yet";
    for (auto& statement : accountTables()) adapter->createTable(statement);
    usecase->dataManager->storeUsers(
        {{.id = "1", .name = "zoe"}, {.id = "2", .name = "Ada"}, {.id = "3", .name = "Élan"}});
    usecase->getUsers();
    settle();
    usecase->getActiveUsers();
    usecase->getUser("3");
    settle();
    usecase->getCurrentUser();
    settle();
    EXPECT_EQ(recorder->events, "Ada Élan zoe 3 none ");
}

}  // namespace
}  // namespace tarvo
