#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "tarvobase/network_layer/ParserProtocol.h"
#include "tarvobase/network_layer/StaticBaseNetworkService.h"
#include "tarvobase/value_objects/module/Module.h"
#include "tarvobase/value_objects/view/FilterProtocol.h"

namespace tarvo {

struct WireRecords;

/// Which records of which view to ask for. The references are read before the call returns.
struct GetCVRecordsNetworkRequest {
    const FilterProtocol& cv;
    const Module& module;
    std::int64_t from = 0;  ///< how many records of the view the client already holds
    std::optional<std::int64_t> maxDownloadCount{};
};

/// Asks the server for the next records of a view, in the view's order.
class GetCVRecordsNetworkService final : public StaticBaseNetworkService {
public:
    /// Gets nullopt if the server could not be reached or its answer cannot be read; both are logged.
    using Completion = std::function<void(std::optional<ParsedResponse<WireRecords, RecordListInfo>>)>;

    std::string baseURL() const override { return networkConstants->getURL(CRMAPIs::Case::customViewRecords); }
    /// Completes exactly once, on the network queue.
    void getRecordList(const GetCVRecordsNetworkRequest& request, Completion completion);
};

}  // namespace tarvo
