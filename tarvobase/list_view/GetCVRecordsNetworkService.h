#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "platform/Result.h"
#include "tarvobase/network_layer/StaticBaseNetworkService.h"
#include "tarvobase/usecase/AppError.h"
#include "tarvobase/value_objects/module/Module.h"
#include "tarvobase/value_objects/view/FilterProtocol.h"

namespace tarvo {

struct ListPage;

/// Which records of which view to ask for. The references are read before the call returns.
struct GetCVRecordsNetworkRequest {
    const FilterProtocol& cv;
    const Module& module;
    std::int64_t from = 0;  ///< how many records of the view the client already holds
    std::optional<std::int64_t> maxDownloadCount{};
};

/// Returns the parameters of a request about a view's records.
ValueMap viewParamsOf(const GetCVRecordsNetworkRequest& request);

/// Asks the server for the next records of a view, in the view's order.
class GetCVRecordsNetworkService final : public StaticBaseNetworkService {
public:
    /// Gets the page, or the reason why there is none, which is logged.
    using Completion = std::function<void(Result<ListPage, FailureDetails>)>;

    std::string baseURL() const override { return networkConstants->getURL(CRMAPIs::Case::customViewRecords); }
    /// Completes exactly once, on the network queue.
    void getRecordList(const GetCVRecordsNetworkRequest& request, Completion completion);
};

}  // namespace tarvo
