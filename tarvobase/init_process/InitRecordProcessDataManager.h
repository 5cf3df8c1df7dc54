#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "tarvobase/configuration/UserDefaults.h"
#include "tarvobase/sync/RecordSyncSettingsPersistance.h"
#include "tarvobase/value_objects/module/ModulesPersistanceDelegate.h"

namespace tarvo {

class DatabaseAdapter;

/// What a download of first records needs around it. Every operation blocks its caller; from any thread.
class InitRecordProcessDataManagerProtocol : public virtual platform::Object {
public:
    /// Creates the record tables of all stored modules from the statements that metadata brought. A statement that
    /// fails, such as one of a table that is there, is logged by the adapter and costs itself alone.
    virtual void createTableForAllModules() = 0;
    virtual void resetRecordDownloadedForAllModules() = 0;
    /// Notes across launches that the first download of an account is complete.
    virtual void initRecordProcessCompleteForUser(const std::string& with) = 0;
    virtual void storeNumberOfRecordsDownloaded(std::int64_t is, const std::string& for_) = 0;
};

class InitRecordProcessDataManager final : public InitRecordProcessDataManagerProtocol {
public:
    InitRecordProcessDataManager(std::shared_ptr<DatabaseAdapter> databaseAdapter,
                                 std::shared_ptr<UserDefaultsProtocol> userDefaults,
                                 std::shared_ptr<ModulesPersistanceDelegate> moduleDAO,
                                 ModuleDetailsConstants moduleDetailsConstants = {});

    void createTableForAllModules() override;
    void resetRecordDownloadedForAllModules() override;
    void initRecordProcessCompleteForUser(const std::string& with) override;
    void storeNumberOfRecordsDownloaded(std::int64_t is, const std::string& for_) override;

private:
    const std::shared_ptr<DatabaseAdapter> databaseAdapter_;
    const std::shared_ptr<UserDefaultsProtocol> userDefaults_;
    const std::shared_ptr<ModulesPersistanceDelegate> moduleDAO_;
    RecordSyncSettingsPersistance recordSettings_;
};

}  // namespace tarvo
