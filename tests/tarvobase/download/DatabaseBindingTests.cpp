#include "tarvobase/download/DatabaseBinding.h"

#include "platform/Files.h"
#include "tarvobase/configuration/Scope.h"
#include "tarvobase/configuration/UserAccounts.h"
#include "tarvobase/sync/RecordSyncSettingsPersistance.h"
#include "tarvobase/utils/UserDefaultsUtil.h"
#include "tests/tarvobase/AccountTables.h"
#include "tests/tarvobase/Fixture.h"

namespace tarvo {
namespace {

/// An account whose first download is complete, with a database that a test removes or keeps.
class DatabaseBindingTest : public FoundationTest, public ::testing::WithParamInterface<std::tuple<bool, bool>> {
protected:
    void SetUp() override {
        FoundationTest::SetUp();
        database = openDatabase();
        defaults = BrenUserDefaults::ofCurrentAccount();
    }
    void bind() { DatabaseBinding::bind(Scope::current(), defaults); }
    void completeDownload() {
        for (auto& statement : accountTables()) database->createTable(statement);
        UserDefaultsUtil state(defaults);
        state.setCompleted("metadata_Leads");
        state.setProgressPercent(100);
        state.setListFilterHasMoreRecord(false, "Leads", "1");
        state.setLastSelectedModule("Leads");
        RecordSyncSettingsPersistance(defaults).storeLastModifiedTime("1700", "Leads");
        UserAccountsManager(defaults).initDownloadCompleteForUser("1001");
    }
    void replaceDatabase() {
        database->deregisterDB();
        for (auto suffix : {"", "-wal", "-shm"}) files::remove(database->databaseName() + suffix);
        database = openDatabase();
    }
    /// Returns whether the settings say that the content is there: all of them, or none.
    bool saysDownloaded() {
        UserDefaultsUtil state(defaults);
        std::set<bool> said{state.isCompleted("metadata_Leads"), state.getProgressPercent() == 100,
                            !state.getListFilterHasMoreRecord("Leads", "1"),
                            RecordSyncSettingsPersistance(defaults).getLastModifiedTime("Leads").has_value(),
                            UserAccountsManager(defaults).isInitialDownloadComplete("1001")};
        EXPECT_EQ(said.size(), 1u) << "some settings were forgotten, others not";
        return *said.begin();
    }

    std::shared_ptr<KelvaDatabasePersistance> database;
    std::shared_ptr<UserDefaultsProtocol> defaults;
};

INSTANTIATE_TEST_SUITE_P(BoundAndReplaced, DatabaseBindingTest,
                         ::testing::Combine(::testing::Bool(), ::testing::Bool()));

/// Without a binding, a database with content counts as the one of the settings.
TEST_P(DatabaseBindingTest, SettingsAreForgottenExactlyIfTheirDatabaseIsReplaced) {
    auto [isBound, isReplaced] = GetParam();
    UserDefaultsUtil otherAccount(std::make_shared<BrenUserDefaults>("2002"));
    otherAccount.setCompleted("metadata_Leads");
    if (isBound) bind();
    completeDownload();
    if (isReplaced) replaceDatabase();
    bind();
    EXPECT_EQ(saysDownloaded(), !isReplaced);
    EXPECT_EQ(UserDefaultsUtil(defaults).getLastSelectedModule(), "Leads") << "what the user chose stays";
    EXPECT_TRUE(otherAccount.isCompleted("metadata_Leads"));
}

}  // namespace
}  // namespace tarvo
