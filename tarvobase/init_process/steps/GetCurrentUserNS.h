#pragma once

#include "tarvobase/network_layer/BaseNetworkService.h"

namespace tarvo {

/// Asks the server who the user is.
class GetCurrentUserNS final : public BaseNetworkService {
public:
    GetCurrentUserNS() : BaseNetworkService(CRMAPIs::Case::getUserDetails) {}
    /// Calls back exactly once, on the network queue, unless the service is let go before.
    void getUserDetails(NetworkCompletion callback) { post({}, std::move(callback)); }
};

}  // namespace tarvo
