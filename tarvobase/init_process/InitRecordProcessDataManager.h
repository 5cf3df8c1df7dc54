#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "tarvobase/configuration/UserDefaults.h"
#include "tarvobase/sync/RecordSyncSettingsPersistance.h"
#include "tarvobase/value_objects/module/ModulesPersistanceDelegate.h"

namespace tarvo {

class DatabaseAdapter;

/// Prepares a download of first records and records its end. From any thread; every operation blocks its caller.
class InitRecordProcessDataManagerProtocol : public virtual platform::Object {
public:
    /// Creates the record tables of all stored modules from the statements in their metadata. The adapter logs a
    /// statement that fails, for example because the table exists; the others still run.
    virtual void createTableForAllModules() = 0;
    virtual void resetRecordDownloadedForAllModules() = 0;
    /// Records across launches that the first download of an account is complete.
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
