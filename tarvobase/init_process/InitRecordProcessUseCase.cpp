#include "tarvobase/init_process/InitRecordProcessUseCase.h"

#include "tarvobase/metadata/Stores.h"

namespace tarvo {

InitRecordProcessUseCase::InitRecordProcessUseCase(
    std::shared_ptr<InitRecordProcessDataManagerProtocol> initRecordProcessDataManager,
    std::shared_ptr<InitCVRecordsDMP> customViewRecordsDataManager)
    : initRecordProcessDataManager(std::move(initRecordProcessDataManager)),
      customViewRecordsDataManager_(std::move(customViewRecordsDataManager)) {}

std::shared_ptr<InitRecordProcessUseCase> InitRecordProcessUseCase::make(
    const std::shared_ptr<DatabaseAdapter>& databaseAdapter, const std::shared_ptr<UserDefaultsProtocol>& userDefaults,
    std::shared_ptr<InitCVRecordsNSP> networkService) {
    auto stores = Stores::over(databaseAdapter, userDefaults);
    auto records = InitCVRecordsDM::make(databaseAdapter, userDefaults, std::move(networkService));
    auto useCase = std::make_shared<InitRecordProcessUseCase>(
        std::make_shared<InitRecordProcessDataManager>(databaseAdapter, stores.userDefaults, stores.modules()),
        records);
    records->errorResponder = useCase;
    return useCase;
}

void InitRecordProcessUseCase::startInitRecordProcess() {
    auto completed = [weak = platform::weakSelf(this)] {
        if (auto self = weak.lock()) self->allCustomViewRecordsRequestsCompleted();
    };
    customViewRecordsDataManager_->getCustomViewRecords(std::nullopt, completed, completed);
}

void InitRecordProcessUseCase::allCustomViewRecordsRequestsCompleted() {
    defaultCustomViewRequestsCompleted_ = true;
    notifyDelegate([this](InitRecordProcessUseCaseDelegate& listener) { listener.initRecordProcessCompleted(*this); });
}

}  // namespace tarvo
