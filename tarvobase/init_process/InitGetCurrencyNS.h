#pragma once

#include "tarvobase/network_layer/BaseNetworkService.h"

namespace tarvo {

/// Asks the server for taxes and currencies.
class InitGetCurrencyNSP : public virtual platform::Object {
public:
    /// Calls back exactly once, on the network queue, unless the service is let go before.
    virtual void getCurrencyMetadata(BodyCallback callback) = 0;
};

class InitGetCurrencyNS final : public BaseNetworkService, public InitGetCurrencyNSP {
public:
    explicit InitGetCurrencyNS(
        std::shared_ptr<NetworkConstantsProtocol> networkConstants = std::make_shared<NetworkConstants>());
    void getCurrencyMetadata(BodyCallback callback) override;
};

}  // namespace tarvo
