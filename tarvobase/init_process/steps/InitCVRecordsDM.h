#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tarvobase/configuration/UserDefaults.h"
#include "tarvobase/download/BatchedDownloadable.h"
#include "tarvobase/init_process/steps/InitCVRecordsNS.h"
#include "tarvobase/records/sql/RecordPersistanceDelegate.h"
#include "tarvobase/sync/RecordSyncSettingsPersistance.h"

namespace tarvo {

class DatabaseAdapter;

class InitCVRecordsDMP : public virtual platform::Object {
public:
    using Callback = std::function<void()>;
    /// Downloads the first records of those of the modules, or of all when they are absent, that were not downloaded
    /// before. `onSuccess` is called once when all is done, also what failed, on the queue of the last answer, or on
    /// the caller's when there is nothing to ask for. `onFailure` is kept and never called. Both stay until the next
    /// call takes their place. A call during a download waits until that is done.
    virtual void getCustomViewRecords(const std::optional<std::vector<Module>>& modules, Callback onSuccess,
                                      Callback onFailure) = 0;
};

/// The step `initialRecords`: downloads the first records of the default view of each module that has one, in batches,
/// and stores them. It needs the record tables and the views, so it runs behind `metadata` and `customviews`, and works
/// out its batches only then.
class InitCVRecordsDM final : public BatchedDownloadable, public InitCVRecordsDMP {
public:
    using Callback = BatchedDownloadable::Callback;

    struct Persistance {
        ModuleBatch::Persistance batches;
        std::shared_ptr<CustomViewPersistanceDelegate> cvDAO;
        std::shared_ptr<RecordPersistanceDelegate> recordDAO;
        std::shared_ptr<RecordSettingsPersistanceProtocol> recordSettingsPersistance;
    };
    InitCVRecordsDM(Persistance persistance, std::shared_ptr<InitCVRecordsNSP> networkService);

    /// A step over the open database, wired together.
    static std::shared_ptr<InitCVRecordsDM> make(
        const std::shared_ptr<DatabaseAdapter>& databaseAdapter,
        const std::shared_ptr<UserDefaultsProtocol>& userDefaults,
        std::shared_ptr<InitCVRecordsNSP> networkService = std::make_shared<InitCVRecordsNS>());

    void initiate() override {}
    /// At least 1: the batches are not known when the runner counts.
    int totalCallsCount() const override;
    void execute() override { getRecords(std::nullopt, std::nullopt); }
    void getCustomViewRecords(const std::optional<std::vector<Module>>& modules, Callback onSuccess,
                              Callback onFailure) override;

    void allBatchesCompleted() override;

protected:
    std::shared_ptr<ModuleBatch> makeModuleBatch() const override;
    void request(const std::vector<Module>& modules) override;

private:
    void getRecords(const std::optional<std::vector<Module>>& modules, std::optional<Callbacks> callbacks);
    std::vector<CVRecordsParams> paramsOf(const std::vector<Module>& modules) const;
    void store(const WireRecords& records, const std::optional<std::string>& moduleName);

    const Persistance persistance_;
    const std::shared_ptr<InitCVRecordsNSP> networkService_;
};

}  // namespace tarvo
