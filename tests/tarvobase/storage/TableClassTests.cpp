#include "tarvobase/storage/InMemoryStorage.h"
#include "tarvobase/value_objects/account/OrganisationInDatabase.h"
#include "tarvobase/value_objects/account/UserInDatabase.h"
#include "tarvobase/value_objects/account/UserInMemory.h"
#include "tarvobase/value_objects/module/SettingsInDatabase.h"
#include "tarvobase/value_objects/module/SettingsInMemeory.h"
#include "tarvobase/value_objects/tag/TagInDatabase.h"
#include "tests/tarvobase/AccountTables.h"
#include "tests/tarvobase/ServerFixture.h"

namespace tarvo {
namespace {

using ::testing::ElementsAre;
using ::testing::UnorderedElementsAre;

class TableClassTest : public ServerTest {
protected:
    void SetUp() override {
        ServerTest::SetUp();
        createTables(accountTables());
    }
    const User bob{.id = "u2", .BrenUID = "2002"};
    const Settings shown{"Leads", SettingName::display, "a,b", "b", true};
    const Settings sorted{"Leads", SettingName::sort, "", "x", false};
};

const User ada{.id = "u1",
               .firstName = "Ada",
               .lastName = "Byron",
               .name = "Ada Byron",
               .BrenUID = "1001",
               .email = "ada@crm.test",
               .status = "active",
               .role = "CEO",
               .confirm = true,
               .profile = "Administrator",
               .profileID = "p1",
               .isLoggedInUser = false,
               .dateFormat = "dd/MM/yyyy",
               .timeZone = "Europe/Berlin"};

/// Every store of users and settings does the same, whether it stands on a table or on memory alone.
TEST_F(TableClassTest, BothStoresOfUsersFindReplaceAndUpdateThem) {
    UserInDatabase table("ACTIVE_USERS", database);
    UserInMemory memory(std::make_shared<InMemoryStorage>());
    EXPECT_FALSE(memory.getActiveUsers().ok());
    for (UserPersistanceDelegate* users : std::initializer_list<UserPersistanceDelegate*>{&table, &memory}) {
        SCOPED_TRACE(users == &table ? "table" : "memory");
        users->storeUsers({ada, bob});
        users->storeUser(bob);
        EXPECT_EQ(users->getUser("u1").value(), ada);
        EXPECT_EQ(users->getUserWithBrenUID().value(), ada);
        EXPECT_EQ(users->getActiveUsers().value(), std::vector{ada});
        EXPECT_EQ(users->getUsersWithBrenUID({"2002", "3003"}).value(), std::vector{bob});
        EXPECT_EQ(users->getUsersWithUserId({"u1", "u1"}).value(), std::vector{ada});
        EXPECT_EQ(users->getUsersWithUserId({}).value().size(), 0u);
        auto moved = ada;
        moved.id = "u7";
        moved.dateFormat.reset();
        users->updateUser(moved, "u1");
        users->updateUser(bob, "nobody");
        EXPECT_THAT(users->getUsers().value(), UnorderedElementsAre(moved, bob));
    }
}

TEST_F(TableClassTest, BothStoresOfSettingsFindThemByModuleAndName) {
    SettingsInDatabase table("APP_SETTINGS", database);
    SettingsInMemeory memory(std::make_shared<InMemoryStorage>());
    const Settings deals{"Deals", SettingName::display, "c", "c", true};
    for (SettingsPersistanceDelegate* settings : std::initializer_list<SettingsPersistanceDelegate*>{&table, &memory}) {
        SCOPED_TRACE(settings == &table ? "table" : "memory");
        settings->storeSettings({{"Leads", SettingName::display, "a", "replaced", true}, sorted, deals});
        settings->storeSettings({shown});
        EXPECT_EQ(settings->getSettingsForModule("Leads", SettingName::display).value(), shown);
        EXPECT_FALSE(settings->getSettingsForModule("Leads", SettingName::search).ok());
        EXPECT_THAT(settings->getSettings("Leads").value(), UnorderedElementsAre(shown, sorted));
        EXPECT_THAT(settings->getAllSettings(SettingName::display).value(), UnorderedElementsAre(shown, deals));
        auto byModule = settings->getSettingsByModuleNames({"Deals", "Nobody"});
        EXPECT_EQ(byModule["Deals"], std::vector{deals});
        EXPECT_TRUE(byModule["Nobody"].empty());
    }
    database->execute("UPDATE APP_SETTINGS SET settings_key = 'of a later version' WHERE settings_key = 'sort'",
                      std::nullopt);
    EXPECT_EQ(table.getSettings("Leads")->back().settingsKey, SettingName::unknown);
}

TEST_F(TableClassTest, MemoryReadsSettingsAgainOnRequest) {
    auto table = std::make_shared<SettingsInDatabase>("APP_SETTINGS", database);
    table->storeSettings({shown, sorted});
    SettingsInMemeory memory(std::make_shared<InMemoryStorage>(), table);
    EXPECT_EQ(memory.getSettings("Leads")->size(), 2u);
    database->execute("UPDATE APP_SETTINGS SET custom_settings = 'a' WHERE settings_key = 'display'", std::nullopt);
    EXPECT_EQ(memory.getSettingsForModule("Leads", SettingName::display)->customSettings, "b");
    EXPECT_EQ(memory.updateDisplayColumns("Leads")->size(), 2u);
    EXPECT_EQ(memory.getSettingsForModule("Leads", SettingName::display)->customSettings, "a");
}

TEST_F(TableClassTest, BothStoresOfOrganisationsReplaceTheList) {
    auto settings = std::make_shared<BrenUserDefaults>();
    OrganisationInDatabase table("ORGANISATIONS", database, settings);
    OrganisationInUserDefaults defaults(settings);
    EXPECT_EQ(defaults.getOrganisations(), std::nullopt);
    const Organisation acme{"1", "Acme", true, false}, bolt{"2", "Bolt", false, true};
    for (OrganisationPersistance* store : std::initializer_list<OrganisationPersistance*>{&table, &defaults}) {
        store->storeOrganisations({acme, bolt});
        EXPECT_THAT(*store->getOrganisations(), UnorderedElementsAre(acme, bolt));
        store->storeOrganisations({bolt});
        EXPECT_THAT(*store->getOrganisations(), ElementsAre(bolt));
        store->storeOrganisations({});
        EXPECT_THAT(*store->getOrganisations(), ElementsAre());
    }
    table.setCurrentOrganisation(bolt);
    EXPECT_EQ(defaults.getCurrentOrganisation(), bolt);
    EXPECT_EQ(defaults.currentOrganisationID(), "2");
    signIn("2002");
    EXPECT_EQ(defaults.getCurrentOrganisation(), std::nullopt) << "the choice belongs to the account";
}

TEST_F(TableClassTest, MappersReadStrictlyAndListsLeaveOutWhatTheyCannotRead) {
    const ValueMap hot{{"id", "1"}, {"name", "hot"}, {"moduleName", "Leads"}};
    std::vector<ValueMap> maps{hot};
    for (auto& [key, bad] : {std::pair("id", Value(1)), {"name", Value()}, {"moduleName", Value()}}) {
        maps.push_back(hot);
        maps.back().set(key, bad);
        EXPECT_EQ(TagMapper().getValue(maps.back()).error().failedPath, key);
    }
    EXPECT_THAT(TagMapper().getValue(maps), ElementsAre(Tag{"1", "hot", "Leads"}));
}

TEST_F(TableClassTest, StoresAndChangesTags) {
    EXPECT_EQ(TagInDatabase(nullptr).getTags("Leads"), std::nullopt);
    TagInDatabase tags(database);
    configuration().databaseAdapter = nullptr;  // A table stays with the database for which it was made.
    tags.storeTags({{"1", "hot", "Leads"}, {"2", "cold", "Leads"}, {"3", "big", "Deals"}});
    tags.storeTags({{"1", "warm", "Leads"}});
    EXPECT_THAT(*tags.getTags("Leads"), UnorderedElementsAre(Tag{"1", "warm", "Leads"}, Tag{"2", "cold", "Leads"}));
    EXPECT_EQ(tags.getTagsByTagIds({"2", "3", "9"})->size(), 2u);
    tags.updateTag("3", "30");
    tags.removeTags("2");
    EXPECT_EQ(tags.getTagsByTagIds({"2", "3"})->size(), 0u);
    database->execute("INSERT INTO Tags_Info (tag_id, module_name) VALUES ('5', 'Leads')", std::nullopt);
    EXPECT_EQ(tags.getTags("Leads"), std::nullopt) << "an unreadable tag fails the whole read";
}

TEST_F(TableClassTest, StoresAndChangesTheTagsOfRecords) {
    TagRecordInDatabase links(database);
    links.storeTagRecords({{"1", "warm", "Leads"}, {"30", "big", "Leads"}}, "r1");
    links.storeTagRecords({{"1", "warm", "Leads"}}, "r2");
    links.updateTagRecord("1", "10", "r1");
    EXPECT_EQ(links.getTagRecordsByTagId("1")->front().recordId, "r2");
    links.deleteTagRecordsByTagIds({"10"}, "r1");
    links.deleteTagRecords({"r2", "r3"});
    EXPECT_THAT(*links.getTagRecordsByRecordId("r1"), ElementsAre(TagRecord{{"30", "big", "Leads"}, "r1"}));
    EXPECT_THAT(*links.getTagRecordsByRecordId("r2"), ElementsAre());
}

}  // namespace
}  // namespace tarvo
