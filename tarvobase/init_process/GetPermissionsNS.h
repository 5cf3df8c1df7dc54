#pragma once

#include "tarvobase/network_layer/BaseNetworkService.h"

namespace tarvo {

/// Asks the server what a profile may do.
class GetPermissionsNSP : public virtual platform::Object {
public:
    /// Calls back exactly once, on the network queue, unless the service is let go before.
    virtual void getPermissions(const std::string& profileId, BodyCallback callback) = 0;
};

class GetPermissionsNS final : public BaseNetworkService, public GetPermissionsNSP {
public:
    explicit GetPermissionsNS(
        std::shared_ptr<NetworkConstantsProtocol> networkConstants = std::make_shared<NetworkConstants>());
    void getPermissions(const std::string& profileId, BodyCallback callback) override;
};

}  // namespace tarvo
