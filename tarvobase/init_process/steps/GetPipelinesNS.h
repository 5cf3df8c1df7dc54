#pragma once

#include "tarvobase/network_layer/BaseNetworkService.h"
#include "tarvobase/value_objects/module/Module.h"

namespace tarvo {

/// Requests the pipelines of the deals.
class GetPipelinesNSP : public virtual platform::Object {
public:
    /// Calls back exactly once, on the network queue, unless the service is released before.
    virtual void getPipelinesAndStages(const Module& deals, const std::string& layoutId,
                                       NetworkCompletion callback) = 0;
};

class GetPipelinesNS final : public BaseNetworkService, public GetPipelinesNSP {
public:
    GetPipelinesNS() : BaseNetworkService(CRMAPIs::Case::getPipelines) {}
    void getPipelinesAndStages(const Module& deals, const std::string& layoutId, NetworkCompletion callback) override {
        post({{"module", deals.moduleName}, {"moduleAPI", deals.apiName}, {"layoutid", layoutId}}, std::move(callback));
    }
};

}  // namespace tarvo
