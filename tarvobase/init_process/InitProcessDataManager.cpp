#include "tarvobase/init_process/InitProcessDataManager.h"

#include "tarvobase/configuration/UserAccounts.h"

namespace tarvo {

void InitProcessDataManager::initProcessCompleteForUser(const std::string& with) {
    UserAccountsManager(userDefaultsAdapter_).initDownloadCompleteForUser(with);
}

}  // namespace tarvo
