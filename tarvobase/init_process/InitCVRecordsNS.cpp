#include "tarvobase/init_process/InitCVRecordsNS.h"

namespace tarvo {

using service::listOf;

InitCVRecordsNS::InitCVRecordsNS(std::shared_ptr<NetworkConstantsProtocol> constants)
    : BaseNetworkService(std::move(constants)) {
    baseURL = networkConstants->getURL(CRMAPIs::Case::customViewRecords);
}

void InitCVRecordsNS::getCVRecords(const std::vector<CVRecordsParams>& params, Callback callback) {
    sendRequest({.params = ValueMap{{"cvid", listOf(params, [](auto& one) { return one.cv.viewID; })},
                                    {"module", listOf(params, [](auto& one) { return one.module.moduleName; })},
                                    {"moduleAPI", listOf(params, [](auto& one) { return one.module.apiName; })},
                                    {"cvName", listOf(params, [](auto& one) { return one.cv.viewName; })}},
                 .method = HTTPMethod::post,
                 .shouldAddOrgId = true,
                 .completionHandler = [params, callback = std::move(callback)](Data data, std::optional<URLResponse>,
                                                                               std::optional<std::string>,
                                                                               std::optional<NetworkError> error, int) {
                     callback(std::move(data), std::move(error), params);
                 }});
}

}  // namespace tarvo
