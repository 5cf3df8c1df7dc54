#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "platform/Result.h"
#include "tarvobase/network_layer/StaticBaseNetworkService.h"
#include "tarvobase/usecase/AppError.h"
#include "tarvobase/value_objects/module/Module.h"

namespace tarvo {

struct DownloadedPage;

/// Which records of a module to ask for.
struct DownloadRecordsNetworkParams {
    Module module;
    std::int64_t from = 0;                           ///< how many records of the module were downloaded
    std::optional<std::int64_t> maxDownloadCount{};  ///< the size of the page; the server's own if absent
};

class DownloadRecordsNetworkServiceProtocol : public virtual platform::Object {
public:
    /// Gets the page, or the reason why there is none, which is logged.
    using Completion = std::function<void(Result<DownloadedPage, FailureDetails>)>;

    /// Completes exactly once, on the network queue.
    virtual void downloadRecords(const DownloadRecordsNetworkParams& params, Completion completion) = 0;
};

/// Asks the server for records of a module.
class DownloadRecordsNetworkService final : public StaticBaseNetworkService,
                                            public DownloadRecordsNetworkServiceProtocol {
public:
    std::string baseURL() const override { return networkConstants->getURL(CRMAPIs::Case::getRecords); }
    void downloadRecords(const DownloadRecordsNetworkParams& params, Completion completion) override;
};

}  // namespace tarvo
