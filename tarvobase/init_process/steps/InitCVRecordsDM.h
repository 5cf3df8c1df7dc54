#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tarvobase/configuration/UserDefaults.h"
#include "tarvobase/download/BatchedDownloadable.h"
#include "tarvobase/init_process/steps/InitCVRecordsNS.h"
#include "tarvobase/records/RecordPersistanceDelegate.h"
#include "tarvobase/sync/AnswersBesideSync.h"
#include "tarvobase/sync/RecordSyncSettingsPersistance.h"

namespace tarvo {

class DatabaseAdapter;
struct WireRecords;

class InitCVRecordsDMP : public virtual platform::Object {
public:
    using Callback = std::function<void()>;
    /// Downloads the first records of the given modules, or of all modules if absent, that were not downloaded before.
    /// `onSuccess` is called once when all batches have ended, including failed ones. It comes on the queue of the last
    /// answer, or on the caller's if there is nothing to request. `onFailure` is called instead if the database did not
    /// store all records. The next call replaces both. A call during a download waits until that download has ended.
    virtual void getCustomViewRecords(const std::optional<std::vector<Module>>& modules, Callback onSuccess,
                                      Callback onFailure) = 0;
};

/// The step `initialRecords`: downloads, in batches, the first records of the default view of each module that has one,
/// and stores them. It needs the record tables and the views, so it runs after `metadata` and `customviews` and
/// determines its batches only then.
class InitCVRecordsDM final : public BatchedDownloadable, public InitCVRecordsDMP {
public:
    using Callback = BatchedDownloadable::Callback;

    struct Persistance {
        ModuleBatch::Persistance batches;
        std::shared_ptr<CustomViewPersistanceDelegate> cvDAO;
        std::shared_ptr<RecordPersistanceDelegate> recordDAO;
        Scope scope;
        std::shared_ptr<RecordSettingsPersistanceProtocol> recordSettingsPersistance;
        AnswersBesideSync answersBesideSync;
    };
    InitCVRecordsDM(Persistance persistance, std::shared_ptr<InitCVRecordsNSP> networkService);

    /// Makes a step over the open database.
    static std::shared_ptr<InitCVRecordsDM> make(
        const std::shared_ptr<DatabaseAdapter>& databaseAdapter,
        const std::shared_ptr<UserDefaultsProtocol>& userDefaults,
        std::shared_ptr<InitCVRecordsNSP> networkService = std::make_shared<InitCVRecordsNS>());

    void initiate() override {}
    /// Returns at least 1, since the batches are not known when the runner counts.
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
    Outcome store(const WireRecords& records, const RecordListInfo& info);
    Outcome storePage(const WireRecords& records, const std::string& moduleName) const;
    bool hasMetadata(const std::string& moduleName) const;

    const Persistance persistance_;
    const std::shared_ptr<InitCVRecordsNSP> networkService_;
};

}  // namespace tarvo
