#include "tarvobase/download/DatabaseBinding.h"

#include "platform/Log.h"
#include "tarvobase/configuration/Scope.h"
#include "tarvobase/configuration/UserAccounts.h"
#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/sync/RecordSyncSettingsPersistance.h"
#include "tarvobase/utils/UserDefaultsUtil.h"
#include "tarvobase/value_objects/module/Module.h"

namespace tarvo {

namespace {

constexpr const char* databaseOfSettings = "databaseOfSettings";

bool hasContent(DatabaseAdapter& database) {
    return !database.columnNames(std::string(ModuleDatabaseConstants().TableName)).empty();
}

void forgetContent(const std::string& account, const std::shared_ptr<UserDefaultsProtocol>& userDefaults) {
    UserDefaultsUtil(userDefaults).forgetContent();
    RecordSyncSettingsPersistance(userDefaults).forgetAll();
    UserAccountsManager accounts(userDefaults);
    // One record per completion.
    for (auto& user : accounts.userWithInitialDownloadComplete().value_or(std::vector<std::string>()))
        if (user == account) accounts.resetInitialDownload(account);
}

}  // namespace

void DatabaseBinding::bind(const Scope& scope, const std::shared_ptr<UserDefaultsProtocol>& userDefaults) {
    auto& database = scope.databaseAdapter;
    auto hadContent = database && hasContent(*database);
    auto identity = database ? database->identity() : std::nullopt;
    if (!identity) return;
    auto bound = userDefaults->stringForKey(databaseOfSettings, UserDefaultsGroup::current());
    if (bound == identity) return;
    if (bound || !hadContent) {
        platform::log(platform::LogLevel::warning, "first download",
                      "the settings of the account belong to another database, and are forgotten");
        forgetContent(scope.account, userDefaults);
    }
    userDefaults->setString(*identity, databaseOfSettings, UserDefaultsGroup::current());
}

}  // namespace tarvo
