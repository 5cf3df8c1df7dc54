#include "tarvobase/init_process/GetPermissionsNS.h"

namespace tarvo {

GetPermissionsNS::GetPermissionsNS(std::shared_ptr<NetworkConstantsProtocol> constants)
    : BaseNetworkService(std::move(constants)) {
    baseURL = networkConstants->getURL(CRMAPIs::Case::getPermissions);
}

void GetPermissionsNS::getPermissions(const std::string& profileId, BodyCallback callback) {
    sendRequest({.params = ValueMap{{"profileid", profileId}},
                 .shouldAddOrgId = true,
                 .completionHandler = service::handingOn(std::move(callback))});
}

}  // namespace tarvo
