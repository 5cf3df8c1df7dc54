#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tarvobase/download/DownloadRecordsDataManager.h"
#include "tarvobase/usecase/DelegateUseCase.h"
#include "tarvobase/usecase/NoticesOnMainQueue.h"

namespace tarvo {

/// Receives the callbacks of `DownloadRecordsUseCase` on the main queue.
class DownloadRecordsUseCaseDelegate : public DownloadRecordsDataManagerDelegate {};

class DownloadRecordsUseCaseProtocol : public virtual platform::Object {
public:
    /// Downloads records of these modules, or of all stored ones if absent. Returns at once. Each call ends with one
    /// `recordsDownloadDidCompleteForAll`, or with `unableToFetchMetadataError` if the modules cannot be read.
    virtual void initiateDownload(std::optional<std::vector<Module>> for_,
                                  DownloadRecordsMaxCount maxDownloadCount) = 0;
};

/// Downloads the first records of modules, or more of them on request. Held by `shared_ptr`; releasing it ends the
/// download after the pages that are on their way.
class DownloadRecordsUseCase final : public DelegateUseCase<DownloadRecordsUseCaseDelegate>,
                                     public DownloadRecordsUseCaseProtocol,
                                     public DownloadRecordsDataManagerDelegate,
                                     public DownloadRecordsErrorsOnMainQueue {
public:
    static std::shared_ptr<DownloadRecordsUseCase> make(const Stores& stores);
    /// The use case becomes the data manager's delegate and error responder.
    static std::shared_ptr<DownloadRecordsUseCase> make(std::shared_ptr<DownloadRecordsDataManager> dataManager);

    void initiateDownload(std::optional<std::vector<Module>> for_, DownloadRecordsMaxCount maxDownloadCount) override;

    const std::shared_ptr<DownloadRecordsDataManager> dataManager;

    // Callbacks of the data manager.
    void recordsDownloaded(const DownloadedRange& inRange, const std::string& moduleName, bool hasMore) override;
    void recordsDownloadDidComplete(const std::string& moduleName) override;
    void recordsDownloadDidCompleteForAll(const std::vector<Module>& modules) override;
    std::shared_ptr<DownloadRecordsErrorProtocol> nextDownloadRecordsErrorProtocolResponder() override {
        return delegate.lock();
    }

private:
    explicit DownloadRecordsUseCase(std::shared_ptr<DownloadRecordsDataManager> dataManager)
        : dataManager(std::move(dataManager)) {}
};

}  // namespace tarvo
