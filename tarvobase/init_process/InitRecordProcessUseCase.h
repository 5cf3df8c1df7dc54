#pragma once

#include <atomic>
#include <memory>

#include "tarvobase/init_process/InitRecordProcessDataManager.h"
#include "tarvobase/init_process/steps/InitCVRecordsDM.h"
#include "tarvobase/usecase/DelegateUseCase.h"
#include "tarvobase/usecase/NoticesOnMainQueue.h"

namespace tarvo {

class InitRecordProcessUseCase;

/// The host's observer of a download of first records, called on the main queue. A failure does not end the download.
class InitRecordProcessUseCaseDelegate : public virtual CommonErrorProtocol {
public:
    /// Called when the records of all modules are stored or given up.
    virtual void initRecordProcessCompleted(InitRecordProcessUseCase& by) { static_cast<void>(by); }
};

/// Downloads the first records alone, for an account whose modules, metadata and views are already stored. It runs the
/// step `initialRecords` of the first download without the other steps. Modules that are done are not requested again.
/// Held by `shared_ptr`; after it is released nothing more is reported.
class InitRecordProcessUseCase final : public DelegateUseCase<InitRecordProcessUseCaseDelegate>,
                                       public CommonErrorsOnMainQueue {
public:
    InitRecordProcessUseCase(std::shared_ptr<InitRecordProcessDataManagerProtocol> initRecordProcessDataManager,
                             std::shared_ptr<InitCVRecordsDMP> customViewRecordsDataManager);
    /// Makes a use case over the open database.
    static std::shared_ptr<InitRecordProcessUseCase> make(
        const std::shared_ptr<DatabaseAdapter>& databaseAdapter,
        const std::shared_ptr<UserDefaultsProtocol>& userDefaults,
        std::shared_ptr<InitCVRecordsNSP> networkService = std::make_shared<InitCVRecordsNS>());

    /// For a host that creates the tables beforehand or resets the counts.
    const std::shared_ptr<InitRecordProcessDataManagerProtocol> initRecordProcessDataManager;

    /// Starts the download and returns.
    void startInitRecordProcess();
    /// Returns whether a download has ended. From any thread.
    bool defaultCustomViewRequestsCompleted() const { return defaultCustomViewRequestsCompleted_; }

    std::shared_ptr<CommonErrorProtocol> nextCommonErrorProtocolResponder() override { return delegate.lock(); }

private:
    void allCustomViewRecordsRequestsCompleted();

    const std::shared_ptr<InitCVRecordsDMP> customViewRecordsDataManager_;
    std::atomic<bool> defaultCustomViewRequestsCompleted_ = false;
};

}  // namespace tarvo
