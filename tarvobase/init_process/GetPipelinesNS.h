#pragma once

#include "tarvobase/network_layer/BaseNetworkService.h"
#include "tarvobase/value_objects/Module.h"

namespace tarvo {

/// Asks the server for the pipelines of the deals.
class GetPipelinesNSP : public virtual platform::Object {
public:
    /// Calls back exactly once, on the network queue, unless the service is let go before.
    virtual void getPipelinesAndStages(const Module& dealModule, const std::string& layoutId,
                                       BodyCallback callback) = 0;
};

class GetPipelinesNS final : public BaseNetworkService, public GetPipelinesNSP {
public:
    explicit GetPipelinesNS(
        std::shared_ptr<NetworkConstantsProtocol> networkConstants = std::make_shared<NetworkConstants>());
    void getPipelinesAndStages(const Module& dealModule, const std::string& layoutId, BodyCallback callback) override;
};

}  // namespace tarvo
