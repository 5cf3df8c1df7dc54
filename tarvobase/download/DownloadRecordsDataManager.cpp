#include "tarvobase/download/DownloadRecordsDataManager.h"

#include "platform/Log.h"
#include "tarvobase/download/wire/DownloadedPage.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/records/sql/RecordInDatabase.h"

namespace tarvo {

namespace {

std::int64_t downloadedCount(const DownloadedPage& downloaded) {
    return static_cast<std::int64_t>(downloaded.records.list.leadingItems({}));
}

bool hasMoreOnServer(const DownloadedPage& downloaded) { return downloaded.info.hasMore.value_or(false); }

}  // namespace

std::shared_ptr<DownloadRecordsDataManager> DownloadRecordsDataManager::make(
    const Stores& stores, std::shared_ptr<DownloadRecordsNetworkServiceProtocol> service) {
    return std::make_shared<DownloadRecordsDataManager>(
        Collaborators{.networkService = std::move(service),
                      .downloadRecordSettingsPersistance =
                          std::make_shared<DownloadRecordSettingsPersistance>(stores.settings(), stores.userDefaults),
                      .recordPersistance = RecordInDatabase::make(stores.databaseAdapter()),
                      .metadataPersistance = stores.fields(),
                      .modulePersistance = stores.modules(),
                      .answersBesideSync = AnswersBesideSync(stores.scope, stores.userDefaults)});
}

template <class Work>
void DownloadRecordsDataManager::onQueue(Work work) {
    queue_->async([weak = platform::weakSelf(this), work = std::move(work)]() mutable {
        if (auto self = weak.lock()) work(*self);
    });
}

void DownloadRecordsDataManager::initiateDownload(std::optional<std::vector<Module>> modules,
                                                  DownloadRecordsMaxCount maxDownloadCount) {
    onQueue([run = Run{std::move(modules), maxDownloadCount}](DownloadRecordsDataManager& self) mutable {
        self.waiting_.push_back(std::move(run));
        if (!self.isRunning_) self.startRun();
    });
}

void DownloadRecordsDataManager::startRun() {
    if (waiting_.empty()) return;
    auto run = std::move(waiting_.front());
    waiting_.pop_front();
    if (!run.modules) {
        auto all = collaborators_.modulePersistance->getAllModules();
        if (!all) {
            unableToFetchMetadataError();
            return startRun();
        }
        run.modules = std::move(all).value();
    }
    isRunning_ = true;
    moduleList_ = *std::move(run.modules);
    maxDownloadCount_ = run.maxDownloadCount;
    moduleIndex_ = parrallelDownloadCount_ = 0;
    startModules();
}

/// Starts modules up to the limit. Without any left and under way, the run is over.
void DownloadRecordsDataManager::startModules() {
    while (moduleIndex_ < moduleList_.size() && parrallelDownloadCount_ < maximumParallelDownloads) {
        ++parrallelDownloadCount_;
        downloadRecords(moduleList_[moduleIndex_++].moduleName);
    }
    if (parrallelDownloadCount_ == 0) endRun();
}

void DownloadRecordsDataManager::downloadRecords(const std::string& moduleName) {
    auto& settings = *collaborators_.downloadRecordSettingsPersistance;
    DownloadRecordsNetworkParams params{.module = {},
                                        .from = settings.numberOfRecordsDownloaded(moduleName).value_or(0)};
    if (maxDownloadCount_ != DownloadRecordsMaxCount::loadMore)
        params.maxDownloadCount = settings.getDownloadRecordsSetting(moduleName).value_or(0);
    auto module = collaborators_.modulePersistance->getModuleByModuleName(moduleName);
    // An end inside the loop that starts modules would start them twice.
    if (!module) return onQueue([](DownloadRecordsDataManager& self) { self.moduleEnded(); });
    params.module = std::move(module).value();
    collaborators_.networkService->downloadRecords(
        params, [weak = platform::weakSelf(this), moduleName, from = params.from](auto downloaded) {
            auto self = weak.lock();
            if (!self) return;
            self->onQueue([moduleName, from, downloaded = std::move(downloaded)](DownloadRecordsDataManager& manager) {
                manager.recordsDownloaded(moduleName, from, downloaded);
            });
        });
}

void DownloadRecordsDataManager::recordsDownloaded(const std::string& moduleName, std::int64_t from,
                                                   const Result<DownloadedPage, FailureDetails>& downloaded) {
    if (!downloaded || !insertRecords(*downloaded, from, moduleName)) {
        unableToDownloadRecordsError();
        return moduleEnded();
    }
    if (!isDownloadCompleted(*downloaded, moduleName)) return downloadRecords(moduleName);
    if (auto listener = delegate.lock()) listener->recordsDownloadDidComplete(moduleName);
    moduleEnded();
}

/// Returns false if the page could not be stored. Another download may have counted the same records meanwhile. Counted
/// twice, they would let the next download leave records out.
bool DownloadRecordsDataManager::insertRecords(const DownloadedPage& downloaded, std::int64_t before,
                                               const std::string& moduleName) {
    auto& settings = *collaborators_.downloadRecordSettingsPersistance;
    auto after = before + downloadedCount(downloaded);
    if (after > before) {
        if (!collaborators_.recordPersistance->storePage(downloaded.records, moduleName)) return false;
        if (auto& beside = collaborators_.answersBesideSync) beside->stored(moduleName, downloaded.info.responseTime);
        auto counted = settings.numberOfRecordsDownloaded(moduleName).value_or(0);
        if (counted >= before && counted < after) settings.storeNumberOfRecordsDownloaded(after, moduleName);
    }
    bool hasMore = hasMoreOnServer(downloaded);
    platform::log(platform::LogLevel::progress, "record download",
                  "Download Completed for module: " + moduleName + " " + std::to_string(before) + "..<" +
                      std::to_string(after) + ", hasMore: " + (hasMore ? "true" : "false"));
    if (auto listener = delegate.lock()) listener->recordsDownloaded({before, after}, moduleName, hasMore);
    return true;
}

/// A page without records does not advance, whatever its flag says: the same request would go out for ever.
bool DownloadRecordsDataManager::isDownloadCompleted(const DownloadedPage& downloaded,
                                                     const std::string& moduleName) const {
    if (!hasMoreOnServer(downloaded) || downloadedCount(downloaded) == 0) return true;
    if (maxDownloadCount_ == DownloadRecordsMaxCount::loadMore) return true;
    auto& settings = *collaborators_.downloadRecordSettingsPersistance;
    auto limit = settings.getDownloadRecordsSetting(moduleName);
    return !limit || settings.numberOfRecordsDownloaded(moduleName).value_or(0) >= *limit;
}

void DownloadRecordsDataManager::moduleEnded() {
    --parrallelDownloadCount_;
    startModules();
}

void DownloadRecordsDataManager::endRun() {
    isRunning_ = false;
    if (auto listener = delegate.lock()) listener->recordsDownloadDidCompleteForAll(moduleList_);
    startRun();
}

}  // namespace tarvo
