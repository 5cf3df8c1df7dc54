#include "tarvobase/configuration/AppPlatformConstants.h"
#include "tarvobase/configuration/DatabaseConstants.h"
#include "tarvobase/configuration/Scope.h"
#include "tarvobase/configuration/UserAccounts.h"
#include "tests/tarvobase/Fixture.h"

namespace tarvo {
namespace {

class ConfigurationTest : public FoundationTest {
protected:
    std::shared_ptr<UserAccountsManager> accounts() {
        return std::make_shared<UserAccountsManager>(std::make_shared<BrenUserDefaults>(),
                                                     std::make_shared<UserAccountsConstants>(),
                                                     std::make_shared<DatabaseConstants>());
    }
};

TEST_F(ConfigurationTest, AnAccountSourceTakesPrecedenceOverAuthentication) {
    configuration().currentAccountIDSource = [] { return std::optional<std::string>("2002"); };
    EXPECT_EQ(configuration().getCurrentAccountID(), "2002");
    configuration().currentAccountIDSource = nullptr;
    EXPECT_EQ(configuration().getCurrentAccountID(), "1001");
    configuration().authentication = nullptr;
    EXPECT_EQ(configuration().getCurrentAccountID(), std::nullopt);
    EXPECT_FALSE(accounts()->hasBrenuid());
}

TEST_F(ConfigurationTest, NamesOfTablesEndWithTheOrganisation) {
    EXPECT_EQ(Scope::current().tableName("T"), "T");
    configuration().currentOrgID = "9";
    EXPECT_EQ(Scope::current().tableName("T"), "T_9");
}

TEST_F(ConfigurationTest, FilesWithoutAFolderOrAnAccountAreAProgrammingError) {
    configuration().localDirectoryLocation = std::nullopt;
    EXPECT_EQ(DatabaseConstants().databaseName(), "");
    configuration().voiceFileDirectoryLocation();
    EXPECT_EQ(takeProgrammingErrors().size(), 2u);
    configuration().localDirectoryLocation = folder();
    configuration().authentication = nullptr;
    static_cast<void>(DatabaseConstants().databaseName());
    EXPECT_EQ(takeProgrammingErrors().size(), 1u);
}

TEST_F(ConfigurationTest, TheFolderOfVoiceNotesIsKeptFromItsFirstUse) {
    auto voice = configuration().voiceFileDirectoryLocation();
    configuration().localDirectoryLocation = "/elsewhere";
    EXPECT_EQ(configuration().voiceFileDirectoryLocation(), voice);
}

TEST_F(ConfigurationTest, SettingsMayBeReadAndSetByManyThreads) {
    auto queue = DispatchQueue::concurrent("tests.settings");
    for (int i = 0; i < 200; ++i) {
        queue->async([this, i] { configuration().dclBD = std::string(40, static_cast<char>('a' + i % 2)); });
        queue->async([this] {
            auto domain = configuration().dclBD.get();
            EXPECT_EQ(domain.find_first_not_of(domain.front()), domain == "crm.example" ? 1u : std::string::npos);
        });
    }
    settle();
}

TEST_F(ConfigurationTest, KeepsWhichAccountsHaveFinishedTheirFirstDownload) {
    auto manager = accounts();
    manager->resetInitialDownload("1");
    EXPECT_EQ(accounts()->userWithInitialDownloadComplete(), std::nullopt);
    for (auto id : {"1", "2", "1"}) manager->initDownloadCompleteForUser(id);
    manager->resetInitialDownload("1");
    EXPECT_EQ(accounts()->userWithInitialDownloadComplete(), (std::vector<std::string>{"2", "1"}));
}

TEST_F(ConfigurationTest, AnAccountIsOfflineUnlessOnlineIsStored) {
    auto manager = accounts();
    manager->updatePersistenceMode("1", PersistenceMode::online);
    manager->updatePersistenceMode("2", PersistenceMode::offline);
    EXPECT_EQ(manager->getPersistenceMode("1"), PersistenceMode::online);
    BrenUserDefaults().setDictionary({{"3", "ONLINE"}}, "PersistanceMode", UserDefaultsGroup::base());
    EXPECT_EQ(manager->getPersistenceMode("3"), PersistenceMode::offline);
}

TEST_F(ConfigurationTest, FindsTheDatabaseFileOfAnAccount) {
    auto manager = accounts();
    EXPECT_FALSE(manager->isDatabasePresentForUser("1001"));
    openDatabase();
    EXPECT_TRUE(manager->isDatabasePresentForUser("1001"));
    EXPECT_FALSE(manager->isDatabasePresentForUser("1002"));
}

TEST_F(ConfigurationTest, ReadsTheTimeOfTheLastModuleSync) {
    auto defaults = std::make_shared<BrenUserDefaults>();
    AppState state(defaults);
    EXPECT_EQ(state.getLastModulesSyncTime("7"), std::nullopt);
    const std::pair<const char*, std::optional<std::int64_t>> cases[] = {
        {"12.5", 12500}, {"-1", -1000}, {"soon", std::nullopt}, {"", std::nullopt}, {"1e300", std::nullopt}};
    for (auto& [text, milliseconds] : cases) {
        defaults->setString(text, "ModuleSyncTime", UserDefaultsGroup::other("7"));
        auto time = state.getLastModulesSyncTime("7");
        EXPECT_EQ(time ? std::optional(time->time_since_epoch().count()) : std::nullopt, milliseconds) << text;
    }
}

TEST_F(ConfigurationTest, EachGroupHasItsOwnSettingsAndThoseOfNobodyStay) {
    BrenUserDefaults defaults;
    using G = UserDefaultsGroup;
    defaults.setString("mine", "k", G::current());
    defaults.setString("all", "k", G::base());
    defaults.setString("bare", "k", G::none());
    EXPECT_EQ(defaults.stringForKey("k", G::other("1001")), "mine");
    EXPECT_EQ(defaults.stringForKey("k", G::other("BaseGroup")), "all");
    EXPECT_EQ(defaults.stringForKey("k", G::other("2002")), std::nullopt);
    defaults.removeAllStoredValues();
    EXPECT_EQ(defaults.stringForKey("k", G::base()), std::nullopt);
    EXPECT_EQ(defaults.stringForKey("k", G::current()), std::nullopt);
    EXPECT_EQ(defaults.stringForKey("k", G::none()), "bare");
}

TEST_F(ConfigurationTest, ObserversGetTheirKeysInTheirGroups) {
    struct Observer final : UserDefaultsValueObserver {
        std::vector<std::string> observingKeys() const override { return {"k"}; }
        std::vector<std::string> observingGroups() const override { return {"1001", ""}; }
        void newValue(const Value& value, const std::string& key, const std::string& group) override {
            values.push_back(key + "@" + group + "=" + value.toText().value_or("?"));
        }
        std::vector<std::string> values;
    };
    BrenUserDefaults defaults;
    auto observer = std::make_shared<Observer>();
    defaults.addObserver(observer);
    defaults.setString("1", "k", UserDefaultsGroup::current());
    defaults.setBool(true, "k", UserDefaultsGroup::none());
    defaults.setString("3", "k", UserDefaultsGroup::base());
    defaults.setString("4", "other", UserDefaultsGroup::current());
    settle();
    EXPECT_EQ(observer->values, (std::vector<std::string>{"k@1001=1", "k@=true"}));
}

}  // namespace
}  // namespace tarvo
