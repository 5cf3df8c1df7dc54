#include "bridge/RecordForms.h"

#include "tarvobase/get_metadata/MetadataStores.h"
#include "tarvobase/list_view/GetCustomViewsDataManager.h"

namespace tarvo::bridge {

std::optional<std::string> RecordQueryTold::complete() {
    auto stored = MetadataStores::current().modules()->getModuleByModuleName(moduleName);
    if (!stored) return "request.moduleName: there is no module \"" + moduleName + "\"";
    module = *stored;
    if (!cvId) return std::nullopt;
    customView = GetCustomViewsDataManager::current()->getCustomView(*cvId, moduleName);
    if (!customView) return "request.cvId: " + moduleName + " has no such view";
    return std::nullopt;
}

}  // namespace tarvo::bridge
