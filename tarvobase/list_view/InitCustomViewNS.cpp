#include "tarvobase/list_view/InitCustomViewNS.h"

namespace tarvo {

using service::listOf;

InitCustomViewNS::InitCustomViewNS(std::shared_ptr<NetworkConstantsProtocol> constants)
    : BaseNetworkService(std::move(constants)) {
    baseURL = networkConstants->getURL(CRMAPIs::Case::customViews);
}

void InitCustomViewNS::getCustomViews(const std::vector<Module>& modules, Callback callback) {
    sendRequest({.params = ValueMap{{"module", listOf(modules, &Module::moduleName)},
                                    {"moduleAPI", listOf(modules, &Module::apiName)}},
                 .method = HTTPMethod::post,
                 .shouldAddOrgId = true,
                 .completionHandler = [modules, callback = std::move(callback)](
                                          Data data, std::optional<URLResponse>, std::optional<std::string>,
                                          std::optional<NetworkError> error,
                                          int) { callback(std::move(data), std::move(error), modules); }});
}

}  // namespace tarvo
