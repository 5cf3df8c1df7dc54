#include "tarvobase/init_process/InitRecordProcessDataManager.h"

#include "platform/Text.h"
#include "tarvobase/configuration/UserAccounts.h"
#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/records/sql/DependentRecords.h"

namespace tarvo {

InitRecordProcessDataManager::InitRecordProcessDataManager(std::shared_ptr<DatabaseAdapter> databaseAdapter,
                                                           std::shared_ptr<UserDefaultsProtocol> userDefaults,
                                                           std::shared_ptr<ModulesPersistanceDelegate> moduleDAO,
                                                           ModuleDetailsConstants moduleDetailsConstants)
    : databaseAdapter_(std::move(databaseAdapter)),
      userDefaults_(std::move(userDefaults)),
      moduleDAO_(std::move(moduleDAO)),
      recordSettings_(userDefaults_, moduleDetailsConstants) {}

void InitRecordProcessDataManager::createTableForAllModules() {
    auto modules = moduleDAO_->getAllModules();
    if (!modules) return;
    for (auto& module : *modules)
        for (auto& statement : text::split(module.tableCreationQuery, "|"))
            if (!statement.empty()) databaseAdapter_->createTable(statement);
    DependentRecords::createIndexes(*databaseAdapter_);
}

void InitRecordProcessDataManager::resetRecordDownloadedForAllModules() {
    auto modules = moduleDAO_->getAllModules();
    if (!modules) return;
    for (auto& module : *modules) storeNumberOfRecordsDownloaded(0, module.moduleName);
}

void InitRecordProcessDataManager::initRecordProcessCompleteForUser(const std::string& with) {
    UserAccountsManager(userDefaults_).initDownloadCompleteForUser(with);
}

void InitRecordProcessDataManager::storeNumberOfRecordsDownloaded(std::int64_t is, const std::string& for_) {
    recordSettings_.storeNumberOfRecordsDownloaded(is, for_);
}

}  // namespace tarvo
