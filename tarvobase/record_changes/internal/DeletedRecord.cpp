#include "tarvobase/record_changes/internal/DeletedRecord.h"

#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/records/SharedActivities.h"
#include "tarvobase/records/sql/CVRecordMapInDatabase.h"

namespace tarvo {

bool removeDeletedRecord(const Stores& stores, RecordPersistanceDelegate& records, const std::string& moduleName,
                         const std::string& recordId) {
    CVRecordMapInDatabase map(stores.databaseAdapter());
    for (auto& module : SharedActivities::modulesOf(*stores.databaseAdapter(), moduleName))
        if (!records.deleteRecord(recordId, module) || !map.deleteFromAllViews(recordId, module)) return false;
    return true;
}

}  // namespace tarvo
