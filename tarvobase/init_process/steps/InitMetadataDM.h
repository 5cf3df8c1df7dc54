#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tarvobase/configuration/UserDefaults.h"
#include "tarvobase/download/BatchedDownloadable.h"
#include "tarvobase/value_objects/account/UserPersistanceDelegate.h"

namespace tarvo {

class DatabaseAdapter;
class MetadataNSP;
class MetadataWriter;
class PopulateRelatedModulesDMP;
struct ParsedMetadataDetail;

/// The step `metadata`: downloads the metadata of modules in batches and stores it: fields, layouts, picklists, related
/// lists, columns of lists, and the record tables.
///
/// The server does not send the column by which a related list points to its parent, so a download clears it. The same
/// commit fills it again.
///
/// After the last batch `ModuleChangedObserver` receives `modulesAdded()` on the main queue and then, after `success`,
/// on the bus's background queue.
class InitMetadataDM final : public BatchedDownloadable {
public:
    struct Persistance {
        std::shared_ptr<UserPersistanceDelegate> userDAO;
        Scope scope;
        ModuleBatch::Persistance batches;
        std::shared_ptr<const MetadataWriter> metadata;
        std::shared_ptr<PopulateRelatedModulesDMP> lookupColumns;
    };
    InitMetadataDM(Persistance persistance, std::shared_ptr<MetadataNSP> networkService);

    /// Makes a step over the open database. `secondaryDbAdapter` keeps the statements of the record tables; it may be
    /// the same adapter. Without a service the step makes one of its own.
    static std::shared_ptr<InitMetadataDM> make(const std::shared_ptr<DatabaseAdapter>& dbAdapter,
                                                const std::shared_ptr<DatabaseAdapter>& secondaryDbAdapter,
                                                std::shared_ptr<UserDefaultsProtocol> userDefaults,
                                                std::shared_ptr<MetadataNSP> networkService = nullptr);

    /// Downloads the given modules, or all stored modules if none is given, whether or not they were downloaded before.
    /// `success` is called once when all batches have ended, including failed ones. It comes on the queue of the last
    /// answer, or on the caller's if there is nothing to request. `failure` is called instead if the database did not
    /// store all of the metadata. The next call replaces both. A call during a download waits until that download has
    /// ended. Nothing is called after the object is released.
    void getMetaData(std::vector<Module> modules, Callback success, Callback failure);

    int totalCallsCount() const override { return 1; }
    void allBatchesCompleted() override;

protected:
    std::shared_ptr<ModuleBatch> makeModuleBatch() const override;
    void request(const std::vector<Module>& modules) override;

private:
    std::string profileID() const;
    Outcome store(const ParsedMetadataDetail& detail);

    const Persistance persistance_;
    const std::shared_ptr<MetadataNSP> networkService_;
};

}  // namespace tarvo
