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

struct SyncLFRecordParsedResult;

/// Which changes of which list to ask for. The references are read before the call returns.
struct GetSyncLFRecordsNetworkRequest {
    const FilterProtocol& filter;
    const Module& module;
    std::int64_t from = 0;
    std::optional<std::int64_t> maxDownloadCount{};
    std::int64_t lastModifiedTime = 0;  ///< milliseconds since 1970: the time of the list
};

/// Asks the server what changed in the list of a view.
class SyncListFilterRecordNSP : public virtual platform::Object {
public:
    /// Gets the changes, or the reason why there are none, which is logged.
    using Completion = std::function<void(Result<SyncLFRecordParsedResult, FailureDetails>)>;
    /// Completes exactly once, on a background queue.
    virtual void getSyncRecordList(const GetSyncLFRecordsNetworkRequest& request, Completion completion) = 0;
};

class SyncListFilterRecordNS final : public StaticBaseNetworkService, public SyncListFilterRecordNSP {
public:
    std::string baseURL() const override { return networkConstants->getURL(CRMAPIs::Case::recordsSync); }
    void getSyncRecordList(const GetSyncLFRecordsNetworkRequest& request, Completion completion) override;
};

}  // namespace tarvo
