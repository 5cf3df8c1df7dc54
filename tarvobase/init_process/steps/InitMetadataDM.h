#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tarvobase/configuration/UserDefaults.h"
#include "tarvobase/download/BatchedDownloadable.h"
#include "tarvobase/metadata/wire/MetadataNS.h"
#include "tarvobase/metadata/wire/MetadataParser.h"
#include "tarvobase/metadata/wire/MetadataWriter.h"
#include "tarvobase/value_objects/account/UserPersistanceDelegate.h"

namespace tarvo {

/// The step `metadata`: downloads the metadata of modules in batches and stores it: fields, layouts, picklists, related
/// lists, columns of lists, and the record tables.
///
/// The server does not send which column of a related list points to its parent, so a download empties it:
/// `PopulateRelatedModulesDM` fills it again afterwards.
///
/// When all batches are done, `ModuleChangedObserver` hears `modulesAdded()` on the main queue and then, after
/// `success`, on the bus's background queue.
class InitMetadataDM final : public BatchedDownloadable {
public:
    struct Persistance {
        std::shared_ptr<UserPersistanceDelegate> userDAO;
        ModuleBatch::Persistance batches;
        MetadataWriter::Persistance metadata;
    };
    InitMetadataDM(Persistance persistance, std::shared_ptr<MetadataNSP> networkService);

    /// A step over the open database, wired together. `secondaryDbAdapter` keeps the statements of the record tables;
    /// it may be the same.
    static std::shared_ptr<InitMetadataDM> make(
        const std::shared_ptr<DatabaseAdapter>& dbAdapter, const std::shared_ptr<DatabaseAdapter>& secondaryDbAdapter,
        std::shared_ptr<UserDefaultsProtocol> userDefaults,
        std::shared_ptr<MetadataNSP> networkService = std::make_shared<MetadataNS>());

    /// Downloads the given modules, or all stored ones when none is given, whether or not they were downloaded before.
    /// `success` is called once when all batches are done, also those that failed, on the queue of the last answer, or
    /// on the caller's when there is nothing to ask for. `failure` is kept and never called, as no failure ends a
    /// download. Both stay until the next call takes their place. A call during a download waits until that is done.
    /// Nothing is called any more when the object is let go.
    void getMetaData(std::vector<Module> modules, Callback success, Callback failure);

    int totalCallsCount() const override { return 1; }
    void allBatchesCompleted() override;

protected:
    std::shared_ptr<ModuleBatch> makeModuleBatch() const override;
    void request(const std::vector<Module>& modules) override;

private:
    std::string profileID() const;

    const Persistance persistance_;
    const MetadataWriter writer_;
    const std::shared_ptr<MetadataNSP> networkService_;
};

}  // namespace tarvo
