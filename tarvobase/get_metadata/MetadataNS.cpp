#include "tarvobase/get_metadata/MetadataNS.h"

#include "tarvobase/configuration/CommonConfigration.h"

namespace tarvo {

namespace {

using service::listOf;

ApiVersion configuredVersion() {
    auto text = rawText(CommonConfigration::sharedInstance().getMetadataApiVersion.get());
    return fromRawText<ApiVersion>(text).value_or(ApiVersion::v4);
}

}  // namespace

MetadataNS::MetadataNS(std::shared_ptr<NetworkConstantsProtocol> constants) : BaseNetworkService(std::move(constants)) {
    baseURL = networkConstants->getURL(CRMAPIs::Case::appMetadata, configuredVersion());
}

void MetadataNS::getMetadata(const MetadataNetworkParams& params, Callback callback) {
    // Metadata belongs to an organisation as the modules do, so the call names it like the init call.
    sendRequest({.params = ValueMap{{"profileid", params.profile},
                                    {"module", listOf(params.modules, &Module::moduleName)},
                                    {"moduleAPI", listOf(params.modules, &Module::apiName)}},
                 .method = HTTPMethod::post,
                 .shouldAddOrgId = true,
                 .completionHandler = [params, callback = std::move(callback)](Data data, std::optional<URLResponse>,
                                                                               std::optional<std::string>,
                                                                               std::optional<NetworkError> error, int) {
                     callback(std::move(data), std::move(error), params);
                 }});
}

}  // namespace tarvo
