#include "tarvobase/init_process/steps/InitGetPermissionsDM.h"

#include "tarvobase/init_process/parsers/PermissionsParser.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/network_layer/FirstEntry.h"

namespace tarvo {

InitGetPermissionsDM::InitGetPermissionsDM(std::shared_ptr<GetPermissionsNSP> networkService,
                                           std::shared_ptr<UserPersistanceDelegate> usersPersistance,
                                           std::shared_ptr<ModulePermissionsPersistanceDelegate> permssionDAO,
                                           UserDefaultsUtil userDefaultsUtil, Scope scope)
    : FlaggedStep(std::move(userDefaultsUtil), std::move(scope)),
      networkService_(std::move(networkService)),
      usersPersistance_(std::move(usersPersistance)),
      permssionDAO_(std::move(permssionDAO)) {}

std::shared_ptr<InitGetPermissionsDM> InitGetPermissionsDM::make(const std::shared_ptr<DatabaseAdapter>& adapter,
                                                                 std::shared_ptr<UserDefaultsProtocol> userDefaults,
                                                                 std::shared_ptr<GetPermissionsNSP> networkService) {
    auto stores = Stores::over(adapter, userDefaults);
    return std::make_shared<InitGetPermissionsDM>(std::move(networkService), stores.users(), stores.permissions(),
                                                  stores.userDefaultsUtil(), stores.scope);
}

void InitGetPermissionsDM::request(NetworkCompletion answered) {
    networkService_->getPermissions(profileID(), std::move(answered));
}

std::string InitGetPermissionsDM::profileID() const {
    auto user = usersPersistance_->getUserWithBrenUID();
    return user ? user->profileID : "";
}

Result<bool, ParserError> InitGetPermissionsDM::store(const Data& body) {
    auto permissions = firstEntry(PermissionsParser(), body);
    if (!permissions) return permissions.error();
    return commit([&] { permssionDAO_->storeModulePermissions(*permissions); });
}

}  // namespace tarvo
