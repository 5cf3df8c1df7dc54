#include "tarvobase/init_process/InitGetCurrencyNS.h"

namespace tarvo {

InitGetCurrencyNS::InitGetCurrencyNS(std::shared_ptr<NetworkConstantsProtocol> constants)
    : BaseNetworkService(std::move(constants)) {
    baseURL = networkConstants->getURL(CRMAPIs::Case::getCurrencyMetadata);
}

void InitGetCurrencyNS::getCurrencyMetadata(BodyCallback callback) {
    sendRequest(
        {.params = ValueMap(), .shouldAddOrgId = true, .completionHandler = service::handingOn(std::move(callback))});
}

}  // namespace tarvo
