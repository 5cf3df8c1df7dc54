#pragma once

#include "tarvobase/network_layer/BaseNetworkService.h"

namespace tarvo {

/// Requests the permissions of a profile.
class GetPermissionsNSP : public virtual platform::Object {
public:
    /// Calls back exactly once, on the network queue, unless the service is released before.
    virtual void getPermissions(const std::string& profileId, NetworkCompletion callback) = 0;
};

class GetPermissionsNS final : public BaseNetworkService, public GetPermissionsNSP {
public:
    GetPermissionsNS() : BaseNetworkService(CRMAPIs::Case::getPermissions) {}
    void getPermissions(const std::string& profileId, NetworkCompletion callback) override {
        post({{"profileid", profileId}}, std::move(callback));
    }
};

}  // namespace tarvo
