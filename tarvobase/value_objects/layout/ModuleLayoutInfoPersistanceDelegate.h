#pragma once

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/Object.h"
#include "tarvobase/value_objects/layout/ModuleLayoutInfo.h"

namespace tarvo {

/// The store of the layouts' names. Lists are in the order of the store. Reads return nullopt if the store cannot be
/// read. Writes return whether they were stored. Any thread may use it.
class ModuleLayoutInfoPersistanceDelegate : public virtual platform::Object {
public:
    using Layouts = std::vector<ModuleLayoutInfo>;

    virtual bool storeModuleLayoutInfo(const ModuleLayoutInfo& layout) = 0;
    virtual bool storeModuleLayoutInfo(const std::vector<ModuleLayoutInfo>& layouts) = 0;
    /// Returns an empty list if the module has no layout.
    virtual std::optional<Layouts> getModuleLayoutInfoByModuleName(const std::string& moduleName) = 0;
    /// Returns nullopt also if the module has no layout with this name.
    virtual std::optional<ModuleLayoutInfo> getModuleLayoutInfoForModuleName(const std::string& moduleName,
                                                                             const std::string& layoutName) = 0;
    /// Returns the layouts by module name. A module without layouts has no entry.
    virtual std::optional<std::unordered_map<std::string, Layouts>> getModuleLayoutInfoByModuleNames(
        const std::vector<std::string>& moduleNames) = 0;
};

}  // namespace tarvo
