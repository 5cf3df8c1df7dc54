#include "tarvobase/metadata/ModuleInfo.h"

#include "tarvobase/metadata/Stores.h"
#include "tarvobase/value_objects/module/ModulesPersistanceDelegate.h"
#include "tarvobase/value_objects/module/SettingsPersistanceDelegate.h"

namespace tarvo {

Result<ModuleInfo, MetadataError> ModuleInfo::createModuleInfo(const std::string& moduleName, FieldList metadata,
                                                               ModulesPersistanceDelegate& modulePersistence,
                                                               SettingsPersistanceDelegate& settingPersistence) {
    auto module = modulePersistence.getModuleByModuleName(moduleName);
    if (!module) return MetadataError::notFound;
    ModuleInfo info;
    info.module = *std::move(module);
    info.metadata = std::move(metadata);
    if (auto permissions = Stores::current().permissions()->getModulePermissionWith(moduleName))
        info.permission.permissionList = *std::move(permissions);
    if (auto settings = settingPersistence.getSettings(moduleName)) info.settings.settingsList = *std::move(settings);
    if (auto settings = settingPersistence.getSettings(std::string(SettingsConstants::applicationModule)))
        info.settings.applicationSettings = SettingsList::heldByEveryModule(*std::move(settings));
    return info;
}

}  // namespace tarvo
