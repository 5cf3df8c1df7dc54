#pragma once

#include <string>
#include <vector>

#include "tarvobase/storage/StoredNames.h"

namespace tarvo {

struct ModulePermission;

struct ModulePermissionConstants : StoredNames<ModulePermissionConstants, ModulePermission> {
    std::string_view TableName = of("ModulePermission", "PERMISSIONS");
    std::string_view ModuleName = of("Modulename", "module_name");
    std::string_view ModuleAPIName = of("ModuleAPPIName", "module_api_name");
    std::string_view Key = of("Key", "permission_key");
    std::string_view Value = of("Value", "permission_value");
};
struct ModulePermissionDatabaseConstants : TableTwin<ModulePermissionConstants> {};

/// Says whether the user's profile may do one thing with a module.
struct ModulePermission {
    std::string moduleName;
    std::string moduleAPIName;
    std::string key;  ///< raw text of a `PermissionKeys`, or a key that only the server knows
    bool value = false;

    static constexpr auto fields() {
        using V = ModulePermission;
        using Names = ModulePermissionConstants;
        return describe(field("moduleName", &V::moduleName, &Names::ModuleName),
                        field("moduleAPIName", &V::moduleAPIName, &Names::ModuleAPIName),
                        field("key", &V::key, &Names::Key), field("value", &V::value, &Names::Value));
    }
    friend bool operator==(const ModulePermission&, const ModulePermission&) = default;
};

enum class PermissionKeys { create, edit, delete_, export_, view };

template <>
struct EnumCases<PermissionKeys> {
    static constexpr EnumCase<PermissionKeys> cases[] = {{PermissionKeys::create, "create", "Create"},
                                                         {PermissionKeys::edit, "edit", "Edit"},
                                                         {PermissionKeys::delete_, "delete", "Delete"},
                                                         {PermissionKeys::export_, "export", "Export"},
                                                         {PermissionKeys::view, "view", "View"}};
};

/// The permissions of one module.
struct PermissionList {
    std::vector<ModulePermission> permissionList;

    /// Returns the value of the first row with this key, or false if there is none.
    bool hasPermission(PermissionKeys key) const;

    static constexpr auto fields() { return describe(field("permissionList", &PermissionList::permissionList)); }
    friend bool operator==(const PermissionList&, const PermissionList&) = default;
};

}  // namespace tarvo
