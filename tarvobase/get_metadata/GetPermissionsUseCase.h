#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tarvobase/usecase/DelegateUseCase.h"
#include "tarvobase/value_objects/module/ModulePermissionsPersistanceDelegate.h"

namespace tarvo {

/// Receives the answers of `GetPermissionsUseCase`, on the main queue.
class GetPermissionsUseCaseDelegate : public virtual platform::Object {
public:
    virtual void permissionFetched(const ModulePermission& permission) { static_cast<void>(permission); }
    virtual void permissionsFetched(const std::string& moduleName, const std::vector<ModulePermission>& permissions) {
        static_cast<void>(moduleName), static_cast<void>(permissions);
    }
    /// The module has no such permission, or there is no database.
    virtual void unableToFetchPermissions(const std::string& moduleName) { static_cast<void>(moduleName); }
};

/// Reports to a delegate what the user may do with a module. Permissions are named by their keys, such as "Create". A
/// module without rows has an empty list.
class GetPermissionsUseCase final : public DelegateUseCase<GetPermissionsUseCaseDelegate> {
public:
    GetPermissionsUseCase();
    explicit GetPermissionsUseCase(std::shared_ptr<ModulePermissionsPersistanceDelegate> dataManager)
        : dataManager(std::move(dataManager)) {}

    void getPermission(const std::string& moduleName, const std::string& permissionName);
    void getPermissions(const std::string& moduleName);
    /// Fetches the permissions with these names, in the order of the store. Unknown names are left out.
    void getPermissions(const std::string& moduleName, const std::vector<std::string>& permissionNames);

    const std::shared_ptr<ModulePermissionsPersistanceDelegate> dataManager;

private:
    template <class Chosen>
    void answerPermissions(const std::string& moduleName, Chosen chosen);
};

}  // namespace tarvo
