#pragma once

#include <string>
#include <vector>

#include "tarvobase/usecase/Describe.h"
#include "tarvobase/value_objects/StoredForm.h"

namespace tarvo {

/// Whether the user's profile may do one thing with a module.
struct ModulePermission {
    std::string moduleName;
    std::string moduleAPIName;
    std::string key;  ///< raw text of a `PermissionKeys`, or one that only the server knows
    bool value = false;

    static constexpr auto fields() {
        return describe(field("moduleName", &ModulePermission::moduleName),
                        field("moduleAPIName", &ModulePermission::moduleAPIName), field("key", &ModulePermission::key),
                        field("value", &ModulePermission::value));
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

    /// The value of the first row of the key; false without one.
    bool hasPermission(PermissionKeys key) const;

    static constexpr auto fields() { return describe(field("permissionList", &PermissionList::permissionList)); }
    friend bool operator==(const PermissionList&, const PermissionList&) = default;
};

struct ModulePermissionConstants {
    std::string_view TableName = "ModulePermission";
    std::string_view ModuleName = "Modulename";
    std::string_view ModuleAPIName = "ModuleAPPIName";
    std::string_view Key = "Key";
    std::string_view Value = "Value";

    ValueMap getDictionary(const ModulePermission& permission) const;
    ModulePermission getValue(const ValueMap& map) const;
};

struct ModulePermissionDatabaseConstants : ModulePermissionConstants {
    constexpr ModulePermissionDatabaseConstants() {
        TableName = "PERMISSIONS";
        ModuleName = "module_name";
        ModuleAPIName = "module_api_name";
        Key = "permission_key";
        Value = "permission_value";
    }
    ValueMap getDictionary(const ModulePermission& permission) const;
    ModulePermission getValue(const Row& row) const;
};

}  // namespace tarvo
