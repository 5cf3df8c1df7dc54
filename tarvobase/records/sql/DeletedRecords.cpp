#include "tarvobase/records/sql/DeletedRecords.h"

#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/records/SharedActivities.h"
#include "tarvobase/records/sql/CVRecordMapInDatabase.h"

namespace tarvo {

bool removeDeletedRecords(const std::shared_ptr<DatabaseAdapter>& databaseAdapter, RecordPersistanceDelegate& records,
                          const std::string& moduleName, const std::vector<std::string>& recordIds) {
    CVRecordMapInDatabase map(databaseAdapter);
    for (auto& module : SharedActivities::modulesOf(*databaseAdapter, moduleName))
        if (!records.deleteRecords(recordIds, module) || !map.deleteFromAllViews(recordIds, module)) return false;
    return true;
}

}  // namespace tarvo
