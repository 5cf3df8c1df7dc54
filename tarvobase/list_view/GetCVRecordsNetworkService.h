#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "tarvobase/network_layer/StaticBaseNetworkService.h"
#include "tarvobase/records/wire/WireRecords.h"
#include "tarvobase/value_objects/module/Module.h"
#include "tarvobase/value_objects/view/FilterProtocol.h"

namespace tarvo {

/// What to ask for. The references are read before the call returns.
struct GetCVRecordsNetworkRequest {
    const FilterProtocol& cv;
    const Module& module;
    std::int64_t from = 0;  ///< records of the view that the client holds already
    std::optional<std::int64_t> maxDownloadCount{};
};

/// Asks the server for the next records of a view, in the view's order.
class GetCVRecordsNetworkService final : public StaticBaseNetworkService {
public:
    /// Absent when the server could not be reached or its answer is none, which is logged.
    using Completion = std::function<void(std::optional<WireRecordsParser::Response>)>;

    std::string baseURL() const override { return networkConstants->getURL(CRMAPIs::Case::customViewRecords); }
    /// Completes exactly once, on the network queue.
    void getRecordList(const GetCVRecordsNetworkRequest& request, Completion completion);
};

}  // namespace tarvo
