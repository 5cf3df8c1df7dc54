#pragma once

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/Object.h"
#include "platform/Result.h"
#include "tarvobase/network_layer/ParserError.h"
#include "tarvobase/value_objects/module/ModulePermission.h"
#include "tarvobase/value_objects/naming/ModuleIdentifier.h"

namespace tarvo {

/// The store of permissions. Writes return whether they were stored. Any thread may use it.
class ModulePermissionsPersistanceDelegate : public virtual platform::Object {
public:
    using Permissions = std::vector<ModulePermission>;
    /// Returns the permissions by module name. A module without rows has no entry. Fails with `ParserError::noData` if
    /// the store cannot be read.
    using PermissionsByModule = Result<std::unordered_map<std::string, Permissions>, ParserError>;

    virtual bool storeModulePermission(const ModulePermission& permission) = 0;
    virtual bool storeModulePermissions(const std::vector<ModulePermission>& permissions) = 0;
    /// Returns nullopt if the module has no row with this key.
    virtual std::optional<ModulePermission> getModulePermissionWith(const std::string& moduleName,
                                                                    const std::string& key) = 0;
    /// Returns an empty list if the module has no rows, and nullopt if the store cannot be read.
    virtual std::optional<Permissions> getModulePermissionWith(const std::string& moduleName) = 0;
    /// Returns false if there is no row.
    virtual bool hasPermission(const ModuleIdentifier& module, PermissionKeys key) = 0;
    virtual PermissionsByModule getModulePermissionsByModuleNames(const std::vector<std::string>& moduleNames) = 0;
    virtual PermissionsByModule getModulePermissionsByModuleAPINames(
        const std::vector<std::string>& moduleAPINames) = 0;
};

}  // namespace tarvo
