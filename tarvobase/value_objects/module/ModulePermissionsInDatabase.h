#pragma once

#include "tarvobase/storage/DatabasePersistanceClass.h"
#include "tarvobase/value_objects/module/ModulePermissionsPersistanceDelegate.h"

namespace tarvo {

/// The table of permissions.
class ModulePermissionsInDatabase final : public StaticDatabasePersistanceClass<ModulePermissionDatabaseConstants>,
                                          public ModulePermissionsPersistanceDelegate {
public:
    using StaticDatabasePersistanceClass::StaticDatabasePersistanceClass;

    bool storeModulePermission(const ModulePermission& permission) override {
        return storeModulePermissions({permission});
    }
    bool storeModulePermissions(const std::vector<ModulePermission>& permissions) override;
    std::optional<ModulePermission> getModulePermissionWith(const std::string& moduleName,
                                                            const std::string& key) override;
    std::optional<Permissions> getModulePermissionWith(const std::string& moduleName) override;
    bool hasPermission(const ModuleIdentifier& module, PermissionKeys key) override;
    PermissionsByModule getModulePermissionsByModuleNames(const std::vector<std::string>& moduleNames) override;
    PermissionsByModule getModulePermissionsByModuleAPINames(const std::vector<std::string>& moduleAPINames) override;

private:
    std::optional<Permissions> permissionsWhere(Criteria criteria) const;
    PermissionsByModule permissionsByModule(std::string_view column, const std::vector<std::string>& values) const;

    static constexpr ModulePermissionDatabaseConstants constants_{};
};

}  // namespace tarvo
