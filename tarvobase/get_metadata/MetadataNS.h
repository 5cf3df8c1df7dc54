#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tarvobase/network_layer/BaseNetworkService.h"
#include "tarvobase/value_objects/Module.h"

namespace tarvo {

struct MetadataNetworkParams {
    std::string profile;  ///< id of the user's profile, which decides what the user sees of a module
    std::vector<Module> modules;
};

/// Asks the server for the metadata of modules.
class MetadataNSP : public virtual platform::Object {
public:
    /// The body, the transport's error when there was one, and the parameters of the call. On the network queue.
    using Callback =
        std::function<void(Data data, std::optional<NetworkError> error, const MetadataNetworkParams& params)>;
    /// Calls back exactly once, unless the service is let go before.
    virtual void getMetadata(const MetadataNetworkParams& params, Callback callback) = 0;
};

class MetadataNS final : public BaseNetworkService, public MetadataNSP {
public:
    explicit MetadataNS(
        std::shared_ptr<NetworkConstantsProtocol> networkConstants = std::make_shared<NetworkConstants>());
    void getMetadata(const MetadataNetworkParams& params, Callback callback) override;
};

}  // namespace tarvo
