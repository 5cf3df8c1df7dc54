#include "tarvobase/download/DownloadRecordsUseCase.h"

namespace tarvo {

using DownloadListener = DownloadRecordsUseCaseDelegate;

std::shared_ptr<DownloadRecordsUseCase> DownloadRecordsUseCase::make(const Stores& stores) {
    return make(DownloadRecordsDataManager::make(stores));
}

std::shared_ptr<DownloadRecordsUseCase> DownloadRecordsUseCase::make(
    std::shared_ptr<DownloadRecordsDataManager> dataManager) {
    std::shared_ptr<DownloadRecordsUseCase> usecase(new DownloadRecordsUseCase(std::move(dataManager)));
    usecase->dataManager->delegate = usecase;
    usecase->dataManager->nextDownloadRecordsErrorResponder = usecase;
    return usecase;
}

void DownloadRecordsUseCase::initiateDownload(std::optional<std::vector<Module>> for_,
                                              DownloadRecordsMaxCount maxDownloadCount) {
    dataManager->initiateDownload(std::move(for_), maxDownloadCount);
}

void DownloadRecordsUseCase::recordsDownloaded(const DownloadedRange& inRange, const std::string& moduleName,
                                               bool hasMore) {
    notifyDelegate([=](DownloadListener& listener) { listener.recordsDownloaded(inRange, moduleName, hasMore); });
}

void DownloadRecordsUseCase::recordsDownloadDidComplete(const std::string& moduleName) {
    notifyDelegate([moduleName](DownloadListener& listener) { listener.recordsDownloadDidComplete(moduleName); });
}

void DownloadRecordsUseCase::recordsDownloadDidCompleteForAll(const std::vector<Module>& modules) {
    notifyDelegate([modules](DownloadListener& listener) { listener.recordsDownloadDidCompleteForAll(modules); });
}

}  // namespace tarvo
