#include "tarvobase/value_objects/module/ModulePermissionsInDatabase.h"

namespace tarvo {

bool ModulePermissionsInDatabase::storeModulePermissions(const std::vector<ModulePermission>& permissions) {
    return table().store(rowsOf(permissions, constants_));
}

std::optional<ModulePermission> ModulePermissionsInDatabase::getModulePermissionWith(const std::string& moduleName,
                                                                                     const std::string& key) {
    return firstOf(
        permissionsWhere(Criteria::and_({columnIs(constants_.ModuleName, moduleName), columnIs(constants_.Key, key)})));
}

std::optional<ModulePermissionsPersistanceDelegate::Permissions> ModulePermissionsInDatabase::getModulePermissionWith(
    const std::string& moduleName) {
    return permissionsWhere(columnIs(constants_.ModuleName, moduleName));
}

bool ModulePermissionsInDatabase::hasPermission(const ModuleIdentifier& module, PermissionKeys key) {
    auto permission = getModulePermissionWith(module.rawValue(), std::string(rawText(key)));
    return permission && permission->value;
}

ModulePermissionsPersistanceDelegate::PermissionsByModule
ModulePermissionsInDatabase::getModulePermissionsByModuleNames(const std::vector<std::string>& moduleNames) {
    return permissionsByModule(constants_.ModuleName, moduleNames);
}
ModulePermissionsPersistanceDelegate::PermissionsByModule
ModulePermissionsInDatabase::getModulePermissionsByModuleAPINames(const std::vector<std::string>& moduleAPINames) {
    return permissionsByModule(constants_.ModuleAPIName, moduleAPINames);
}

ModulePermissionsPersistanceDelegate::PermissionsByModule ModulePermissionsInDatabase::permissionsByModule(
    std::string_view column, const std::vector<std::string>& values) const {
    auto groups = groupedBy(&ModulePermission::moduleName, permissionsWhere(columnIn(column, values)));
    if (!groups) return ParserError(ParserError::Case::noData);
    return *std::move(groups);
}

std::optional<ModulePermissionsPersistanceDelegate::Permissions> ModulePermissionsInDatabase::permissionsWhere(
    Criteria criteria) const {
    auto rows = table().fetch(FetchQuery(table().tableName(), std::move(criteria)));
    return table().valuesOf(rows, [](const Row& row) { return constants_.getValue(row); });
}

}  // namespace tarvo
