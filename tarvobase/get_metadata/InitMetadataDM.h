#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "tarvobase/get_metadata/MetadataNS.h"
#include "tarvobase/get_metadata/MetadataParser.h"
#include "tarvobase/get_metadata/MetadataWriter.h"
#include "tarvobase/init_process/ModuleBatch.h"
#include "tarvobase/value_objects/ModulesPersistanceDelegate.h"
#include "tarvobase/value_objects/UserPersistanceDelegate.h"

namespace tarvo {

/// Downloads the metadata of modules in batches and stores it: fields, layouts, picklists, related lists, columns of
/// lists, and the record tables. A batch that fails is logged and never stops the others.
///
/// The server does not send which column of a related list points to its parent, so a download empties it:
/// `PopulateRelatedModulesDM` fills it again afterwards.
///
/// When all batches are done, `ModuleChangedObserver` hears `modulesAdded()` on the main queue and then, after
/// `success`, on the bus's background queue.
class InitMetadataDM : public ModuleBatchDelegate {
public:
    using Callback = std::function<void()>;

    struct Persistance {
        std::shared_ptr<UserPersistanceDelegate> userDAO;
        std::shared_ptr<ModulesPersistanceDelegate> moduleDAO;
        MetadataWriter::Persistance metadata;
    };
    InitMetadataDM(Persistance persistance, std::shared_ptr<MetadataNSP> networkService);

    /// A download into the open database, wired together. `secondaryDbAdapter` keeps the statements of the record
    /// tables; it may be the same.
    static std::shared_ptr<InitMetadataDM> make(
        const std::shared_ptr<DatabaseAdapter>& dbAdapter, const std::shared_ptr<DatabaseAdapter>& secondaryDbAdapter,
        std::shared_ptr<MetadataNSP> networkService = std::make_shared<MetadataNS>());

    /// Downloads the given modules, or all stored ones when none is given, whether or not they were downloaded before.
    /// `success` is called once when all batches are done, also those that failed, on the queue of the last answer, or
    /// on the caller's when there is nothing to ask for. `failure` is kept and never called, as no failure ends a
    /// download. Both stay until the next call takes their place. A call during a download waits until that is done.
    /// Nothing is called any more when the object is let go.
    void getMetaData(std::vector<Module> modules, Callback success, Callback failure);

    void nextBatch(const std::vector<Module>& modules) override;
    void allBatchesCompleted() override;

private:
    struct Download {
        std::vector<Module> modules;
        Callback success;
        Callback failure;
    };
    using Answer = ParsedResponse<ParsedMetadataDetail, ParsedMetadataInfo>;

    void startNextDownload();
    std::shared_ptr<ModuleBatch> prepareNextDownload();
    std::string profileID() const;
    void answered(const Data& data, const MetadataNetworkParams& params);
    void handleSuccessResponse(const Answer& answer, const MetadataNetworkParams& params);
    void handleFailureResponse(const MetadataNetworkParams& params);
    void batchCompleted(const std::vector<Module>& modules);

    const Persistance persistance_;
    const MetadataWriter writer_;
    const std::shared_ptr<MetadataNSP> networkService_;

    std::mutex mutex_;
    std::deque<Download> waiting_;
    bool isDownloading_ = false;
    std::shared_ptr<ModuleBatch> moduleBatch_;
    Callback success_;
    Callback failure_;
};

}  // namespace tarvo
