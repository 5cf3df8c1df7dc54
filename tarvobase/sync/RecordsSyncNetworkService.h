#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/DispatchQueue.h"
#include "platform/Result.h"
#include "tarvobase/network_layer/StaticBaseNetworkService.h"
#include "tarvobase/usecase/AppError.h"
#include "tarvobase/value_objects/module/Module.h"

namespace tarvo {

struct SyncRecordsResponse;

/// Receives the pages of `RecordsSyncNetworkService`.
class RecordsSyncDelegate : public virtual platform::Object {
public:
    /// A page, or the reason why there is none.
    using SyncResults = Result<SyncRecordsResponse, FailureDetails>;
    /// Runs on a background queue, so that storing a page keeps no other answer waiting. Pages of different modules
    /// may come at the same time. `from` and `module` are those of the request.
    virtual void syncCompleted(SyncResults syncResults, std::int64_t from, const Module& module) = 0;
};

class RecordsSyncNetworkServiceProtocol : public virtual platform::Object {
public:
    std::weak_ptr<RecordsSyncDelegate> recordsSyncDelegate;

    /// Asks for what changed in a module since `lastModifiedTime`. `from` is the number of records that this round has
    /// received. Ends with one `syncCompleted`; the delegate lives until then.
    virtual void syncRecordsForModule(const Module& module, const std::string& lastModifiedTime, std::int64_t from,
                                      std::int64_t maximumRecords) = 0;
};

/// Asks the server for changes of records.
class RecordsSyncNetworkService final : public StaticBaseNetworkService, public RecordsSyncNetworkServiceProtocol {
public:
    std::string baseURL() const override { return networkConstants->getURL(CRMAPIs::Case::recordsSync); }
    void syncRecordsForModule(const Module& module, const std::string& lastModifiedTime, std::int64_t from,
                              std::int64_t maximumRecords) override;

private:
    const std::shared_ptr<DispatchQueue> shortAnswers_ =
        DispatchQueue::serial("sync.answers", DispatchQueue::Quality::background);
};

}  // namespace tarvo
