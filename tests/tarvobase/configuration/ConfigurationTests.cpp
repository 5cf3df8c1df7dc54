#include "platform/Files.h"
#include "tarvobase/configuration/AppPlatformConstants.h"
#include "tarvobase/configuration/Assemblers.h"
#include "tarvobase/configuration/DatabaseConstants.h"
#include "tarvobase/configuration/Scope.h"
#include "tarvobase/configuration/UserAccounts.h"
#include "tarvobase/value_objects/account/DateTimeInUserDefaults.h"
#include "tarvobase/value_objects/field/FieldMetadata.h"
#include "tarvobase/value_objects/view/CustomViewConstants.h"
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
    EXPECT_EQ(configuration().getCurrentAccountID(), "1001");
    configuration().currentAccountIDSource = [] { return std::optional<std::string>("2002"); };
    EXPECT_EQ(configuration().getCurrentAccountID(), "2002");
    configuration().currentAccountIDSource = nullptr;
    EXPECT_EQ(configuration().getCurrentAccountID(), "1001");
}

TEST_F(ConfigurationTest, WithoutAuthenticationThereIsNoAccount) {
    configuration().authentication = nullptr;
    EXPECT_EQ(configuration().getCurrentAccountID(), std::nullopt);
    EXPECT_EQ(accounts()->getCurrentBrenUID(), "");
    EXPECT_FALSE(accounts()->hasBrenuid());
}

TEST_F(ConfigurationTest, NamesOfTablesEndWithTheOrganisation) {
    EXPECT_EQ(Scope::current().tableName("T"), "T");
    configuration().currentOrgID = "9";
    EXPECT_EQ(Scope::current().tableName("T"), "T_9");
}

TEST_F(ConfigurationTest, ColumnsOfViewsFollowTheSettingForServerCriteria) {
    EXPECT_EQ(configuration().customViewDBConstants().ListFields, "list_fields");
    for (int i = 0; i < 2; ++i) {
        configuration().serverCVCriteria = true;
        EXPECT_EQ(configuration().customViewDBConstants().ListFields, "selected_columns");
        EXPECT_EQ(configuration().customViewDBConstants().ViewID, "view_id");
    }
}

TEST_F(ConfigurationTest, TheFolderOfVoiceNotesIsKeptFromItsFirstUse) {
    auto voice = configuration().voiceFileDirectoryLocation();
    EXPECT_EQ(voice, folder() + "/VoiceNotes/");
    configuration().localDirectoryLocation = "/elsewhere";
    EXPECT_EQ(configuration().voiceFileDirectoryLocation(), voice);
}

TEST_F(ConfigurationTest, IdentifiersOfFieldsFollowTheNaming) {
    FieldMetadata field;
    field.columnCRMName = "COLUMN";
    field.fieldAPIName = "api";
    EXPECT_EQ(field.fieldIdentifier(), "COLUMN");
    configuration().fieldIdentifier = FieldIdentifier::fieldAPINameIdentifier();
    EXPECT_EQ(field.fieldIdentifier(), "api");
}

TEST_F(ConfigurationTest, ADatabaseWithoutAFolderOrAnAccountIsAProgrammingError) {
    configuration().localDirectoryLocation = std::nullopt;
    EXPECT_EQ(DatabaseConstants().databaseName(), "");
    EXPECT_EQ(takeProgrammingErrors().size(), 1u);
    configuration().localDirectoryLocation = folder();
    configuration().authentication = nullptr;
    static_cast<void>(DatabaseConstants().databaseName());
    EXPECT_EQ(takeProgrammingErrors().size(), 1u);
}

TEST_F(ConfigurationTest, VoiceNotesWithoutAFolderAreAProgrammingError) {
    configuration().localDirectoryLocation = std::nullopt;
    configuration().voiceFileDirectoryLocation();
    EXPECT_EQ(takeProgrammingErrors().size(), 1u);
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

TEST_F(ConfigurationTest, ResettingAnAccountThatNeverFinishedStoresNothing) {
    accounts()->resetInitialDownload("1");
    EXPECT_EQ(accounts()->userWithInitialDownloadComplete(), std::nullopt);
}

TEST_F(ConfigurationTest, KeepsWhichAccountsHaveFinishedTheirFirstDownload) {
    auto manager = accounts();
    for (auto id : {"1", "2", "1"}) manager->initDownloadCompleteForUser(id);
    manager->resetInitialDownload("1");
    EXPECT_EQ(accounts()->userWithInitialDownloadComplete(), (std::vector<std::string>{"2", "1"}));
    EXPECT_TRUE(manager->isInitialDownloadComplete("1"));
    EXPECT_FALSE(manager->isInitialDownloadComplete("3"));
}

TEST_F(ConfigurationTest, AnAccountIsOfflineUnlessOnlineIsStored) {
    auto manager = accounts();
    EXPECT_EQ(manager->getPersistenceMode("1"), PersistenceMode::offline);
    manager->updatePersistenceMode("1", PersistenceMode::online);
    manager->updatePersistenceMode("2", PersistenceMode::offline);
    EXPECT_EQ(manager->getPersistenceMode("1"), PersistenceMode::online);
    EXPECT_TRUE(wasLogged("PersistanceMode updated for `1` to `online`"));
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
    struct {
        const char* text;
        std::optional<std::int64_t> milliseconds;
    } cases[] = {{"12.5", 12500}, {"-1", -1000}, {"soon", std::nullopt}, {"", std::nullopt}, {"1e300", std::nullopt}};
    for (auto& one : cases) {
        defaults->setString(one.text, "ModuleSyncTime", UserDefaultsGroup::other("7"));
        auto time = state.getLastModulesSyncTime("7");
        EXPECT_EQ(time ? std::optional(time->time_since_epoch().count()) : std::nullopt, one.milliseconds) << one.text;
    }
}

TEST_F(ConfigurationTest, EachGroupHasItsOwnSettings) {
    BrenUserDefaults defaults;
    using G = UserDefaultsGroup;
    defaults.setString("mine", "k", G::current());
    defaults.setString("all", "k", G::base());
    EXPECT_EQ(defaults.stringForKey("k", G::other("1001")), "mine");
    EXPECT_EQ(defaults.stringForKey("k", G::other("BaseGroup")), "all");
    signIn("2002");
    EXPECT_EQ(defaults.stringForKey("k", G::current()), std::nullopt);
}

TEST_F(ConfigurationTest, ASettingOfAnotherKindReadsAsAbsent) {
    BrenUserDefaults defaults;
    defaults.setInteger(7, "n", UserDefaultsGroup::base());
    EXPECT_EQ(defaults.stringForKey("n", UserDefaultsGroup::base()), std::nullopt);
    EXPECT_EQ(defaults.integerForKey("n", UserDefaultsGroup::base()), 7);
}

TEST_F(ConfigurationTest, StoringAnAbsentListRemovesTheKey) {
    BrenUserDefaults defaults;
    defaults.setSecureArray(ValueList{1}, "s", UserDefaultsGroup::current());
    defaults.setSecureArray(std::nullopt, "s", UserDefaultsGroup::current());
    EXPECT_EQ(defaults.secureArrayForKey("s", UserDefaultsGroup::current()), std::nullopt);
}

TEST_F(ConfigurationTest, RemovingAllSettingsKeepsThoseOfNobody) {
    BrenUserDefaults defaults;
    defaults.setString("all", "k", UserDefaultsGroup::base());
    defaults.setString("mine", "k", UserDefaultsGroup::current());
    defaults.setString("bare", "k", UserDefaultsGroup::none());
    defaults.removeAllStoredValues();
    EXPECT_EQ(defaults.stringForKey("k", UserDefaultsGroup::base()), std::nullopt);
    EXPECT_EQ(defaults.stringForKey("k", UserDefaultsGroup::current()), std::nullopt);
    EXPECT_EQ(defaults.stringForKey("k", UserDefaultsGroup::none()), "bare");
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

TEST_F(ConfigurationTest, AnAssemblerOfTwoDatabasesTakesTheSecondaryOne) {
    auto primary = std::make_shared<KelvaDatabasePersistance>(StorageLocation::inMemory());
    auto secondary = std::make_shared<KelvaDatabasePersistance>(StorageLocation::onDisk("x"));
    BaseAssemblerWithDatabaseUserDefaults assembler(
        {primary, secondary}, nullptr, std::make_shared<DatabaseConstants>(), std::make_shared<BrenUserDefaults>());
    EXPECT_EQ(assembler.databaseAdapter, secondary);
}

}  // namespace
}  // namespace tarvo
