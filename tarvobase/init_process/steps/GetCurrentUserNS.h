#pragma once

#include "tarvobase/network_layer/BaseNetworkService.h"

namespace tarvo {

/// Requests the row of the signed-in user.
class GetCurrentUserNS final : public BaseNetworkService {
public:
    GetCurrentUserNS() : BaseNetworkService(CRMAPIs::Case::getUserDetails) {}
    /// Calls back exactly once, on the network queue, unless the service is released before.
    void getUserDetails(NetworkCompletion callback) { post({}, std::move(callback)); }
};

}  // namespace tarvo
