#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "tarvobase/init_process/ModuleBatch.h"
#include "tarvobase/network_layer/BaseNetworkService.h"

namespace tarvo {

/// Asks the server for the first records of views, a view a module.
class InitCVRecordsNSP : public virtual platform::Object {
public:
    /// The body, the transport's error when there was one, and the parameters of the call. On the network queue.
    using Callback =
        std::function<void(Data data, std::optional<NetworkError> error, const std::vector<CVRecordsParams>& params)>;
    /// Calls back exactly once, unless the service is let go before.
    virtual void getCVRecords(const std::vector<CVRecordsParams>& params, Callback callback) = 0;
};

class InitCVRecordsNS final : public BaseNetworkService, public InitCVRecordsNSP {
public:
    explicit InitCVRecordsNS(
        std::shared_ptr<NetworkConstantsProtocol> networkConstants = std::make_shared<NetworkConstants>());
    void getCVRecords(const std::vector<CVRecordsParams>& params, Callback callback) override;
};

}  // namespace tarvo
