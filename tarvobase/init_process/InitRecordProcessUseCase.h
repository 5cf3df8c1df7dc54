#pragma once

#include <atomic>
#include <memory>

#include "tarvobase/init_process/InitRecordProcessDataManager.h"
#include "tarvobase/init_process/steps/InitCVRecordsDM.h"
#include "tarvobase/usecase/DelegateUseCase.h"
#include "tarvobase/usecase/NoticesOnMainQueue.h"

namespace tarvo {

class InitRecordProcessUseCase;

/// What the host hears of a download of first records, all of it on the main queue. A failure ends no download.
class InitRecordProcessUseCaseDelegate : public virtual CommonErrorProtocol {
public:
    /// The records of all modules are there, or given up.
    virtual void initRecordProcessCompleted(InitRecordProcessUseCase& by) { static_cast<void>(by); }
};

/// The first records alone, for an account whose modules, metadata and views are stored already: what the step
/// `initialRecords` of the first download does, without the steps around it. Modules that are done are not asked for
/// again. Held by `shared_ptr`; when it is let go nothing more is told.
class InitRecordProcessUseCase final : public DelegateUseCase<InitRecordProcessUseCaseDelegate>,
                                       public CommonErrorsOnMainQueue {
public:
    InitRecordProcessUseCase(std::shared_ptr<InitRecordProcessDataManagerProtocol> initRecordProcessDataManager,
                             std::shared_ptr<InitCVRecordsDMP> customViewRecordsDataManager);
    /// Over the open database, wired together.
    static std::shared_ptr<InitRecordProcessUseCase> make(
        const std::shared_ptr<DatabaseAdapter>& databaseAdapter,
        const std::shared_ptr<UserDefaultsProtocol>& userDefaults,
        std::shared_ptr<InitCVRecordsNSP> networkService = std::make_shared<InitCVRecordsNS>());

    /// Creates the tables beforehand, or sets the counts back, for a host that needs it.
    const std::shared_ptr<InitRecordProcessDataManagerProtocol> initRecordProcessDataManager;

    /// Starts the download and returns.
    void startInitRecordProcess();
    /// Whether a download has ended. From any thread.
    bool defaultCustomViewRequestsCompleted() const { return defaultCustomViewRequestsCompleted_; }

    std::shared_ptr<CommonErrorProtocol> nextCommonErrorProtocolResponder() override { return delegate.lock(); }

private:
    void allCustomViewRecordsRequestsCompleted();

    const std::shared_ptr<InitCVRecordsDMP> customViewRecordsDataManager_;
    std::atomic<bool> defaultCustomViewRequestsCompleted_ = false;
};

}  // namespace tarvo
