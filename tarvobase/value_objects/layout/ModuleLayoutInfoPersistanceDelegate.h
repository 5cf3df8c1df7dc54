#pragma once

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/Object.h"
#include "tarvobase/value_objects/layout/ModuleLayoutInfo.h"

namespace tarvo {

/// The store of the layouts' names. Lists are in the order of the store. Without an answer of the store reads are
/// absent. From any thread.
class ModuleLayoutInfoPersistanceDelegate : public virtual platform::Object {
public:
    using Layouts = std::vector<ModuleLayoutInfo>;

    virtual void storeModuleLayoutInfo(const ModuleLayoutInfo& layout) = 0;
    virtual void storeModuleLayoutInfo(const std::vector<ModuleLayoutInfo>& layouts) = 0;
    /// Empty when the module has no layout.
    virtual std::optional<Layouts> getModuleLayoutInfoByModuleName(const std::string& moduleName) = 0;
    /// Absent too when the module has no layout of that name.
    virtual std::optional<ModuleLayoutInfo> getModuleLayoutInfoForModuleName(const std::string& moduleName,
                                                                             const std::string& layoutName) = 0;
    /// By module name; a module without layouts has no entry.
    virtual std::optional<std::unordered_map<std::string, Layouts>> getModuleLayoutInfoByModuleNames(
        const std::vector<std::string>& moduleNames) = 0;
};

}  // namespace tarvo
