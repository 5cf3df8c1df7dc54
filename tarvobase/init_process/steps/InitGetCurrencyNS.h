#pragma once

#include "tarvobase/network_layer/BaseNetworkService.h"

namespace tarvo {

/// Requests taxes and currencies.
class InitGetCurrencyNSP : public virtual platform::Object {
public:
    /// Calls back exactly once, on the network queue, unless the service is released before.
    virtual void getCurrencyMetadata(NetworkCompletion callback) = 0;
};

class InitGetCurrencyNS final : public BaseNetworkService, public InitGetCurrencyNSP {
public:
    InitGetCurrencyNS() : BaseNetworkService(CRMAPIs::Case::getCurrencyMetadata) {}
    void getCurrencyMetadata(NetworkCompletion callback) override { post({}, std::move(callback)); }
};

}  // namespace tarvo
