#include "tarvobase/init_process/InitProcessDataManager.h"

#include "tarvobase/configuration/UserAccounts.h"

namespace tarvo {

void InitProcessDataManager::initProcessCompleteForUser(const std::string& with) {
    UserAccountsManager(userDefaultsAdapter_).initDownloadCompleteForUser(with);
}

void InitProcessDataManager::initProcessIncompleteForUser(const std::string& with) {
    UserAccountsManager accounts(userDefaultsAdapter_);
    // One record per completion.
    for (auto& user : accounts.userWithInitialDownloadComplete().value_or(std::vector<std::string>()))
        if (user == with) accounts.resetInitialDownload(with);
}

}  // namespace tarvo
