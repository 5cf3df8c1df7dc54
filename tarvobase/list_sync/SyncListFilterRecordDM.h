#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/Result.h"
#include "tarvobase/list_sync/ListChangesStore.h"
#include "tarvobase/list_sync/SyncLFRecordCompletionStatus.h"
#include "tarvobase/list_sync/SyncListFilterRecordNS.h"
#include "tarvobase/metadata/GetModuleInfoDataManager.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/sync/AnswersBesideSync.h"
#include "tarvobase/transaction/UnlistedRecordsContract.h"

namespace tarvo {

/// Brings the stored list of a view up to date: asks the server what entered, changed, was deleted and left since the
/// time of the list, and stores it as `ListChangesStore` says. A list that was never read has no time and is left
/// alone, without any callback. Too many changes empty the list, which is then loaded again page by page; this counts
/// as a failure.
///
/// Syncs of one list never overlap: a call during a sync is served by one more after it. Held by `shared_ptr`. May be
/// called from any thread.
class SyncListFilterRecordDM final : public virtual platform::Object {
public:
    struct Collaborators {
        Scope scope;
        std::shared_ptr<UserDefaultsUtil> userDefaultsUtil;
        std::shared_ptr<SyncListFilterRecordNSP> networkService;  ///< null sends nothing
        std::shared_ptr<GetModuleInfoDataManager> moduleInfoDatamanager;
        std::shared_ptr<CustomViewPersistanceDelegate> customViewPersistence;
        std::shared_ptr<FilterRecordMapPersistanceDelegate> recordMapPersitance;
        std::shared_ptr<RecordPersistanceDelegate> recordPersistence;
        std::shared_ptr<GetFilterRecordsDBSP> recordDBS;
        std::shared_ptr<UnlistedRecordsContract> unlistedRecords;
        AnswersBesideSync answersBesideSync;
        /// Follows the id of the view in the keys of the settings, so that another list of the view has a position of
        /// its own.
        std::string userDefaultsSuffix{};
    };
    explicit SyncListFilterRecordDM(Collaborators collaborators) : collaborators_(std::move(collaborators)) {}
    static std::shared_ptr<SyncListFilterRecordDM> make(
        const Stores& stores,
        std::shared_ptr<SyncListFilterRecordNSP> networkService = std::make_shared<SyncListFilterRecordNS>());

    using Status = SyncLFRecordCompletionStatus;
    /// Blocks its caller for a read of the database. `callback` gets the status once, on a background queue, unless the
    /// list, the view or the module is not here. The observers of `SyncLFRecordNotificationDelegate` are notified as
    /// well.
    void syncListFilterRecord(const std::string& moduleName, const std::string& criteriaId,
                              std::function<void(Status)> callback);

private:
    struct ListOfView {
        ModuleInfo moduleInfo;
        CustomView view;
        std::int64_t syncTime = 0;
        std::int64_t lastAdded = 0;
    };
    using Answer = Result<SyncLFRecordParsedResult, FailureDetails>;

    std::optional<ListOfView> listOf(const std::string& moduleName, const std::string& criteriaId) const;
    void triggerNetworkRequest(const ListOfView& list, SyncListFilterRecordNSP::Completion completion) const;
    Status networkCompletion(const Answer& answer, const ListOfView& list) const;
    Status store(const SyncLFRecordParsedResult& changes, const ListOfView& list) const;

    Collaborators collaborators_;
};

}  // namespace tarvo
