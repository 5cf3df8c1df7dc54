#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tarvobase/metadata/SettingsList.h"
#include "tarvobase/value_objects/field/FieldList.h"
#include "tarvobase/value_objects/field/MetadataError.h"
#include "tarvobase/value_objects/layout/Layout.h"
#include "tarvobase/value_objects/module/Module.h"
#include "tarvobase/value_objects/module/ModulePermission.h"

/// A module with all that screens and record logic need to know about it, in four forms: alone, with the modules of its
/// subforms, with its layouts, and with both.
namespace tarvo {

class SettingsPersistanceDelegate;
class ModulesPersistanceDelegate;

/// The members of every form.
struct ModuleInfo {
    Module module;
    FieldList metadata;
    PermissionList permission;
    SettingsList settings;

    const std::string& moduleName() const { return module.moduleName; }
    const std::string& moduleApi() const { return module.apiName; }
    /// Returns whether the user may create records of the module.
    bool hasCreatePermission() const { return permission.hasPermission(PermissionKeys::create); }

    /// Builds the info of a module whose fields are already read. Returns `notFound` if there is no such module.
    /// Permissions are read from the database that is open.
    static Result<ModuleInfo, MetadataError> createModuleInfo(const std::string& moduleName, FieldList metadata,
                                                              ModulesPersistanceDelegate& modulePersistence,
                                                              SettingsPersistanceDelegate& settingPersistence);

    static constexpr auto fields() {
        return describe(field("module", &ModuleInfo::module), field("metadata", &ModuleInfo::metadata),
                        field("permission", &ModuleInfo::permission), field("settings", &ModuleInfo::settings));
    }
};

/// The interface for code that takes a module's info in any form.
using ModuleInfoContract = ModuleInfo;

/// The modules behind a module's subform fields, by module name.
template <class T>
struct ChildModuleInfo {
    ChildModuleInfo() = default;
    explicit ChildModuleInfo(std::vector<T> moduleInfos) {
        for (auto& info : moduleInfos) {
            auto name = info.moduleName();
            moduleMap.try_emplace(std::move(name), std::move(info));
        }
    }
    std::map<std::string, T> moduleMap;

    static constexpr auto fields() { return describe(field("moduleMap", &ChildModuleInfo::moduleMap)); }
};

/// The children in a form that has them.
template <class T>
struct ChildInfoContract {
    std::optional<ChildModuleInfo<T>> childModules;  ///< absent for a module without subform fields

    /// Returns the info of a child, or null. The pointer is valid as long as this value.
    const T* getModuleInfo(const std::string& moduleName) const {
        if (!childModules) return nullptr;
        auto found = childModules->moduleMap.find(moduleName);
        return found == childModules->moduleMap.end() ? nullptr : &found->second;
    }
};

struct ModuleInfoWithChild : ModuleInfo, ChildInfoContract<ModuleInfo> {
    static constexpr auto fields() {
        return describe(ModuleInfo::fields(), field("childModules", &ModuleInfoWithChild::childModules));
    }
};

/// `T` is the shape of the layouts.
template <class T>
struct LayoutModuleInfo : ModuleInfo {
    LayoutInfo<T> layoutInfo;

    /// Returns a layout of this module, or null. The pointer is valid as long as this value.
    const Layout<T>* getLayout(const std::string& withID, const std::string& inModule) const {
        return inModule == moduleName() ? layoutInfo.getLayout(withID) : nullptr;
    }
    static constexpr auto fields() {
        return describe(ModuleInfo::fields(), field("layoutInfo", &LayoutModuleInfo::layoutInfo));
    }
};

template <class T>
struct LayoutModuleInfoWithChild : LayoutModuleInfo<T>, ChildInfoContract<LayoutModuleInfo<T>> {
    /// Returns a layout of this module or of a child, or null. The pointer is valid as long as this value.
    const Layout<T>* getLayout(const std::string& withID, const std::string& inModule) const {
        if (auto child = this->getModuleInfo(inModule)) return child->getLayout(withID, inModule);
        return LayoutModuleInfo<T>::getLayout(withID, inModule);
    }
    static constexpr auto fields() {
        return describe(LayoutModuleInfo<T>::fields(), field("childModules", &LayoutModuleInfoWithChild::childModules));
    }
};

}  // namespace tarvo
