#include "tarvobase/get_metadata/GetPermissionsUseCase.h"

#include "platform/Text.h"
#include "tarvobase/metadata/Stores.h"

namespace tarvo {

GetPermissionsUseCase::GetPermissionsUseCase() : GetPermissionsUseCase(Stores::current().permissions()) {}

void GetPermissionsUseCase::getPermission(const std::string& moduleName, const std::string& permissionName) {
    answer([store = dataManager, moduleName,
            permissionName] { return store->getModulePermissionWith(moduleName, permissionName); },
           [moduleName](GetPermissionsUseCaseDelegate& delegate, const std::optional<ModulePermission>& permission) {
               permission ? delegate.permissionFetched(*permission) : delegate.unableToFetchPermissions(moduleName);
           });
}

void GetPermissionsUseCase::getPermissions(const std::string& moduleName) {
    answerPermissions(moduleName, [](const ModulePermission&) { return true; });
}

void GetPermissionsUseCase::getPermissions(const std::string& moduleName,
                                           const std::vector<std::string>& permissionNames) {
    answerPermissions(moduleName, [permissionNames](const ModulePermission& permission) {
        return text::contains(permissionNames, permission.key);
    });
}

template <class Chosen>
void GetPermissionsUseCase::answerPermissions(const std::string& moduleName, Chosen chosen) {
    using Permissions = std::optional<std::vector<ModulePermission>>;
    answer(
        [store = dataManager, moduleName, chosen] {
            Permissions permissions = store->getModulePermissionWith(moduleName);
            if (permissions) std::erase_if(*permissions, [&](auto& permission) { return !chosen(permission); });
            return permissions;
        },
        [moduleName](GetPermissionsUseCaseDelegate& delegate, const Permissions& permissions) {
            permissions ? delegate.permissionsFetched(moduleName, *permissions)
                        : delegate.unableToFetchPermissions(moduleName);
        });
}

}  // namespace tarvo
