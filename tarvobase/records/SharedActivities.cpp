#include "tarvobase/records/SharedActivities.h"

#include <algorithm>
#include <array>

#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/records/RecordUtil.h"
#include "tarvobase/utils/TemporaryIds.h"
#include "tarvobase/value_objects/transaction/RecordIdAliases.h"

namespace tarvo {

namespace {

constexpr std::array<std::string_view, 3> activityModules{"Tasks", "Events", "Calls"};

}  // namespace

bool SharedActivities::isActivity(std::string_view moduleName) {
    return std::find(activityModules.begin(), activityModules.end(), moduleName) != activityModules.end();
}

std::vector<std::string> SharedActivities::modulesOf(DatabaseAdapter& databaseAdapter, const std::string& moduleName) {
    std::vector<std::string> modules{moduleName};
    if (isActivity(moduleName) &&
        !databaseAdapter.columnNames(RecordUtil::getTableName(SharedActivities::moduleName)).empty())
        modules.emplace_back(SharedActivities::moduleName);
    return modules;
}

std::vector<std::string> SharedActivities::modulesIn(const std::string& moduleName) {
    std::vector<std::string> modules{moduleName};
    if (moduleName == SharedActivities::moduleName)
        modules.insert(modules.end(), activityModules.begin(), activityModules.end());
    return modules;
}

std::string SharedActivities::currentId(RecordIdAliases& aliases, const std::string& moduleName,
                                        const std::string& recordId) {
    if (!isTemporaryRecordId(recordId)) return recordId;
    for (auto& module : modulesIn(moduleName))
        if (auto current = aliases.currentId(module, recordId); current != recordId) return current;
    return recordId;
}

}  // namespace tarvo
