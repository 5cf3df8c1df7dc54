#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/DispatchQueue.h"
#include "tarvobase/download/DownloadRecordSettingsPersistance.h"
#include "tarvobase/download/DownloadRecordsMaxCount.h"
#include "tarvobase/download/DownloadRecordsNetworkService.h"
#include "tarvobase/records/RecordPersistanceDelegate.h"
#include "tarvobase/sync/AnswersBesideSync.h"
#include "tarvobase/usecase/ErrorProtocols.h"
#include "tarvobase/value_objects/field/FieldMetadataPersistanceDelegate.h"
#include "tarvobase/value_objects/module/ModulesPersistanceDelegate.h"

namespace tarvo {

class Stores;

/// Places in a module's list of records, from the first one up to, but not including, the last one.
struct DownloadedRange {
    std::int64_t from = 0;
    std::int64_t to = 0;
};

/// Receives the notices of `DownloadRecordsDataManager` on the queue of the work, and those of `DownloadRecordsUseCase`
/// on the main queue.
class DownloadRecordsDataManagerDelegate : public virtual DownloadRecordsErrorProtocol {
public:
    /// A page is stored and counted. `inRange` is empty for a page without records.
    virtual void recordsDownloaded(const DownloadedRange& inRange, const std::string& moduleName, bool hasMore) {
        static_cast<void>(inRange), static_cast<void>(moduleName), static_cast<void>(hasMore);
    }
    /// The module is complete: the server has no more, or the limit is reached. A module that fails gets no callback.
    virtual void recordsDownloadDidComplete(const std::string& moduleName) { static_cast<void>(moduleName); }
    /// All modules of the run have ended, including those that failed.
    virtual void recordsDownloadDidCompleteForAll(const std::vector<Module>& modules) { static_cast<void>(modules); }
};

class DownloadRecordsDataManagerProtocol : public virtual platform::Object {
public:
    std::weak_ptr<DownloadRecordsDataManagerDelegate> delegate;
    /// Downloads records of these modules, or of all stored ones if absent. Returns at once. A call during a run waits
    /// until that run has ended.
    virtual void initiateDownload(std::optional<std::vector<Module>> modules,
                                  DownloadRecordsMaxCount maxDownloadCount) = 0;
};

/// Fills the tables of modules, page by page in the server's order, from the number of records that were downloaded
/// before. At most four modules are asked for at a time. A page is stored, then counted, then reported, so that a run
/// which breaks off repeats one page at most. A failed page ends its module for this run. The watermark of the sync is
/// left alone: the server's order may shift between two pages, and the sync brings what a download misses by that.
class DownloadRecordsDataManager final : public DownloadRecordsDataManagerProtocol,
                                         public DownloadRecordsErrorProtocolWithChaining {
public:
    struct Collaborators {
        std::shared_ptr<DownloadRecordsNetworkServiceProtocol> networkService;
        std::shared_ptr<DownloadRecordSettingsPersistanceProtocol> downloadRecordSettingsPersistance;
        std::shared_ptr<RecordPersistanceDelegate> recordPersistance;
        std::shared_ptr<FieldMetadataPersistanceDelegate> metadataPersistance;
        std::shared_ptr<ModulesPersistanceDelegate> modulePersistance;
        std::optional<AnswersBesideSync> answersBesideSync{};
    };
    static constexpr std::size_t maximumParallelDownloads = 4;

    explicit DownloadRecordsDataManager(Collaborators collaborators) : collaborators_(std::move(collaborators)) {}
    static std::shared_ptr<DownloadRecordsDataManager> make(
        const Stores& stores, std::shared_ptr<DownloadRecordsNetworkServiceProtocol> service =
                                  std::make_shared<DownloadRecordsNetworkService>());

    std::weak_ptr<DownloadRecordsErrorProtocol> nextDownloadRecordsErrorResponder;
    std::shared_ptr<DownloadRecordsErrorProtocol> nextDownloadRecordsErrorProtocolResponder() override {
        return nextDownloadRecordsErrorResponder.lock();
    }

    void initiateDownload(std::optional<std::vector<Module>> modules,
                          DownloadRecordsMaxCount maxDownloadCount) override;

private:
    struct Run {
        std::optional<std::vector<Module>> modules;
        DownloadRecordsMaxCount maxDownloadCount;
    };
    template <class Work>
    void onQueue(Work work);
    void startRun();
    void startModules();
    void downloadRecords(const std::string& moduleName);
    void recordsDownloaded(const std::string& moduleName, std::int64_t from,
                           const Result<DownloadedPage, FailureDetails>& downloaded);
    bool insertRecords(const DownloadedPage& downloaded, std::int64_t before, const std::string& moduleName);
    bool isDownloadCompleted(const DownloadedPage& downloaded, const std::string& moduleName) const;
    void moduleEnded();
    void endRun();

    const Collaborators collaborators_;
    /// All of the work runs here, so that the members below need no lock and no other answer waits for a page.
    const std::shared_ptr<DispatchQueue> queue_ = DispatchQueue::serial("tarvobase.record_download");
    std::deque<Run> waiting_;
    bool isRunning_ = false;
    std::vector<Module> moduleList_;
    DownloadRecordsMaxCount maxDownloadCount_ = DownloadRecordsMaxCount::defaultMaxCount;
    std::size_t moduleIndex_ = 0;             // the next module to start
    std::size_t parrallelDownloadCount_ = 0;  // downloads under way
};

}  // namespace tarvo
