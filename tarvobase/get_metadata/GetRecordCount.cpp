#include "tarvobase/get_metadata/GetRecordCount.h"

#include "tarvobase/records/sql/RecordInDatabase.h"
#include "tarvobase/sync/RecordSyncSettingsPersistance.h"

namespace tarvo {

std::optional<std::int64_t> GetRecordCount::getCount() const {
    RecordQuery all;
    all.module.moduleName = moduleName_;
    return recordPersistance_->countRecords(all);
}

std::optional<std::string> GetRecordCount::getLastSyncTime() const {
    return settingsPersistance_->getLastModifiedTime(moduleName_);
}

std::shared_ptr<GetRecordCount> GetRecordCount::make(const std::string& moduleName,
                                                     const std::shared_ptr<DatabaseAdapter>& databaseAdapter,
                                                     std::shared_ptr<UserDefaultsProtocol> userDefaults) {
    return std::make_shared<GetRecordCount>(moduleName, RecordInDatabase::make(databaseAdapter),
                                            std::make_shared<RecordSyncSettingsPersistance>(std::move(userDefaults)));
}

}  // namespace tarvo
