#pragma once

#include "tarvobase/network_layer/BaseNetworkService.h"

namespace tarvo {

/// Asks the server who the user is.
class GetCurrentUserNS final : public BaseNetworkService {
public:
    explicit GetCurrentUserNS(
        std::shared_ptr<NetworkConstantsProtocol> networkConstants = std::make_shared<NetworkConstants>());
    /// Calls back exactly once, on the network queue, unless the service is let go before.
    void getUserDetails(BodyCallback callback);
};

}  // namespace tarvo
