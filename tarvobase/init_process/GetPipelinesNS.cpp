#include "tarvobase/init_process/GetPipelinesNS.h"

namespace tarvo {

GetPipelinesNS::GetPipelinesNS(std::shared_ptr<NetworkConstantsProtocol> constants)
    : BaseNetworkService(std::move(constants)) {
    baseURL = networkConstants->getURL(CRMAPIs::Case::getPipelines);
}

void GetPipelinesNS::getPipelinesAndStages(const Module& dealModule, const std::string& layoutId,
                                           BodyCallback callback) {
    sendRequest(
        {.params =
             ValueMap{{"module", dealModule.moduleName}, {"moduleAPI", dealModule.apiName}, {"layoutid", layoutId}},
         .shouldAddOrgId = true,
         .completionHandler = service::handingOn(std::move(callback))});
}

}  // namespace tarvo
