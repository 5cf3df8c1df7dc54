#pragma once

#include "tarvobase/storage/DatabasePersistanceClass.h"
#include "tarvobase/value_objects/layout/ModuleLayoutInfoPersistanceDelegate.h"

namespace tarvo {

/// The table of the layouts' names.
class ModuleLayoutInfoInDatabase final : public DatabasePersistanceClass, public ModuleLayoutInfoPersistanceDelegate {
public:
    using DatabasePersistanceClass::DatabasePersistanceClass;

    bool storeModuleLayoutInfo(const ModuleLayoutInfo& layout) override {
        return storeModuleLayoutInfo(Layouts{layout});
    }
    bool storeModuleLayoutInfo(const std::vector<ModuleLayoutInfo>& layouts) override;
    std::optional<Layouts> getModuleLayoutInfoByModuleName(const std::string& moduleName) override;
    std::optional<ModuleLayoutInfo> getModuleLayoutInfoForModuleName(const std::string& moduleName,
                                                                     const std::string& layoutName) override;
    std::optional<std::unordered_map<std::string, Layouts>> getModuleLayoutInfoByModuleNames(
        const std::vector<std::string>& moduleNames) override;
    /// Returns nullopt if there is no such layout.
    std::optional<ModuleLayoutInfo> getModuleLayoutInfoByLayoutId(const std::string& layoutId);

private:
    std::optional<Layouts> layoutsWhere(Criteria criteria) const;

    static constexpr ModuleLayoutInfoDatabaseConstants constants_{};
};

}  // namespace tarvo
