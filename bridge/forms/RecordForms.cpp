#include "bridge/forms/RecordForms.h"

#include "tarvobase/list_view/GetCustomViewsDataManager.h"
#include "tarvobase/metadata/Stores.h"

namespace tarvo::bridge {

std::optional<std::string> JsonRecordQuery::complete() {
    auto stored = Stores::current().modules()->getModuleByModuleName(moduleName);
    if (!stored) return "request.moduleName: there is no module \"" + moduleName + "\"";
    module = *stored;
    if (!cvId) return std::nullopt;
    customView = GetCustomViewsDataManager::current()->getCustomView(*cvId, moduleName);
    if (!customView) return "request.cvId: " + moduleName + " has no such view";
    return std::nullopt;
}

}  // namespace tarvo::bridge
