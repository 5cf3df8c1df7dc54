#include "tarvobase/init_process/GetCurrentUserNS.h"

namespace tarvo {

GetCurrentUserNS::GetCurrentUserNS(std::shared_ptr<NetworkConstantsProtocol> constants)
    : BaseNetworkService(std::move(constants)) {
    baseURL = networkConstants->getURL(CRMAPIs::Case::getUserDetails);
}

void GetCurrentUserNS::getUserDetails(BodyCallback callback) {
    sendRequest(
        {.params = ValueMap(), .shouldAddOrgId = true, .completionHandler = service::handingOn(std::move(callback))});
}

}  // namespace tarvo
