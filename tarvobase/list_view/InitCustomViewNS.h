#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tarvobase/network_layer/BaseNetworkService.h"
#include "tarvobase/value_objects/Module.h"

namespace tarvo {

/// Asks the server for the views of modules.
class InitCustomViewNSP : public virtual platform::Object {
public:
    /// The body, the transport's error when there was one, and the modules of the call. On the network queue.
    using Callback =
        std::function<void(Data data, std::optional<NetworkError> error, const std::vector<Module>& modules)>;
    /// Calls back exactly once, unless the service is let go before.
    virtual void getCustomViews(const std::vector<Module>& modules, Callback callback) = 0;
};

class InitCustomViewNS final : public BaseNetworkService, public InitCustomViewNSP {
public:
    explicit InitCustomViewNS(
        std::shared_ptr<NetworkConstantsProtocol> networkConstants = std::make_shared<NetworkConstants>());
    void getCustomViews(const std::vector<Module>& modules, Callback callback) override;
};

}  // namespace tarvo
