#pragma once

#include <string>
#include <vector>

#include "tarvobase/configuration/Variant.h"
#include "tarvobase/network_layer/BaseNetworkService.h"
#include "tarvobase/value_objects/module/Module.h"

namespace tarvo {

struct MetadataNetworkParams {
    std::string profile;  ///< id of the user's profile, which decides which parts of a module the user sees
    std::vector<Module> modules;
};

/// Asks the server for the metadata of modules.
class MetadataNSP : public virtual platform::Object {
public:
    /// Calls back exactly once, on the network queue, unless the service is released before that.
    virtual void getMetadata(const MetadataNetworkParams& params, NetworkCompletion callback) = 0;
};

class MetadataNS final : public BaseNetworkService, public MetadataNSP {
public:
    MetadataNS() : BaseNetworkService(CRMAPIs::Case::appMetadata, configuredVersion()) {}
    // Metadata belongs to an organisation as the modules do, so the call names it like the init call.
    void getMetadata(const MetadataNetworkParams& params, NetworkCompletion callback) override {
        post({{"profileid", params.profile},
              {"module", service::listOf(params.modules, &Module::moduleName)},
              {"moduleAPI", service::listOf(params.modules, &Module::apiName)}},
             std::move(callback));
    }

private:
    static ApiVersion configuredVersion() {
        auto text = rawText(variant::metadataVersion());
        return fromRawText<ApiVersion>(text).value_or(ApiVersion::v4);
    }
};

}  // namespace tarvo
