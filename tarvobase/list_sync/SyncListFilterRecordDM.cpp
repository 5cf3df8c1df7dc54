#include "tarvobase/list_sync/SyncListFilterRecordDM.h"

#include "platform/Log.h"
#include "tarvobase/list_sync/SyncLFRecordNotificationDelegate.h"
#include "tarvobase/list_sync/wire/SyncLFRecordParser.h"
#include "tarvobase/list_view/sql/GetCVRecordsDBS.h"
#include "tarvobase/notification/BrenNotificationCenter.h"
#include "tarvobase/records/sql/CVRecordMapInDatabase.h"
#include "tarvobase/sync/SyncTurns.h"
#include "tarvobase/transaction/UnlistedRecordsInDatabase.h"

namespace tarvo {

namespace {

using ListStatus = SyncLFRecordCompletionStatus;

constexpr std::int64_t defaultFrom = 0;
constexpr std::int64_t defaultMaxCount = 1000;

void logListSync(const std::string& text) { platform::log(platform::LogLevel::progress, "list sync", text); }

/// Returns whether an answer is about another module. The server may name a module by either name.
bool isForeign(const SyncLFRecordParsedResult& changes, const Module& module) {
    auto& name = changes.info.moduleName;
    return name && *name != module.moduleName && *name != module.apiName;
}

void notifyListSynced(const std::string& moduleName, const std::string& criteriaId, const ListStatus& status) {
    BrenNotificationCenter::shared().notify<SyncLFRecordNotificationDelegate>(
        true, [=](SyncLFRecordNotificationDelegate& observer) { observer.listSynced(moduleName, criteriaId, status); });
}

}  // namespace

std::shared_ptr<SyncListFilterRecordDM> SyncListFilterRecordDM::make(
    const Stores& stores, std::shared_ptr<SyncListFilterRecordNSP> networkService) {
    auto map = std::make_shared<CVRecordMapInDatabase>(stores.databaseAdapter());
    auto records = std::make_shared<GetCVRecordsDBS>(stores.databaseAdapter(), map);
    return std::make_shared<SyncListFilterRecordDM>(
        Collaborators{.scope = stores.scope,
                      .userDefaultsUtil = std::make_shared<UserDefaultsUtil>(stores.userDefaults),
                      .networkService = std::move(networkService),
                      .moduleInfoDatamanager = GetModuleInfoAssembler::getModuleInfoDM(),
                      .customViewPersistence = stores.customViews(),
                      .recordMapPersitance = map,
                      .recordPersistence = records,
                      .recordDBS = records,
                      .unlistedRecords = std::make_shared<UnlistedRecordsInDatabase>(stores),
                      .answersBesideSync = AnswersBesideSync(stores.scope, stores.userDefaults)});
}

void SyncListFilterRecordDM::syncListFilterRecord(const std::string& moduleName, const std::string& criteriaId,
                                                  std::function<void(Status)> callback) {
    if (!collaborators_.networkService || !listOf(moduleName, criteriaId)) return;
    using Turns = SyncTurns<Status>;
    auto run = [self = platform::strongSelf<SyncListFilterRecordDM>(this), moduleName,
                criteriaId](std::shared_ptr<Turns::Turn> turn) {
        // The sync before this one has moved the time.
        auto list = self->listOf(moduleName, criteriaId);
        if (!list) return;
        self->triggerNetworkRequest(*list, [self, turn, list](const Answer& answer) {
            turn->outcome = self->networkCompletion(answer, *list);
        });
    };
    auto ended = [moduleName, criteriaId, callback = std::move(callback)](const Status& status) {
        callback(status);
        notifyListSynced(moduleName, criteriaId, status);
    };
    auto what = "list of " + moduleName + " " + criteriaId + collaborators_.userDefaultsSuffix;
    Turns::shared().ask(collaborators_.scope, what, std::move(run), std::move(ended));
}

/// Returns nullopt for a list that was never read, and if its view or module is not here.
std::optional<SyncListFilterRecordDM::ListOfView> SyncListFilterRecordDM::listOf(const std::string& moduleName,
                                                                                 const std::string& criteriaId) const {
    auto time = collaborators_.userDefaultsUtil->getListFilterRecordSyncTime(
        moduleName, criteriaId + collaborators_.userDefaultsSuffix);
    if (!time || *time == 0) return std::nullopt;
    auto moduleInfo = collaborators_.moduleInfoDatamanager->getModuleInfo(moduleName);
    if (!moduleInfo) return std::nullopt;
    auto view = collaborators_.customViewPersistence->getCustomView(criteriaId, moduleName);
    if (!view) return std::nullopt;
    return ListOfView{*std::move(moduleInfo), *std::move(view), *time,
                      collaborators_.unlistedRecords->lastAddedRecord()};
}

void SyncListFilterRecordDM::triggerNetworkRequest(const ListOfView& list,
                                                   SyncListFilterRecordNSP::Completion completion) const {
    logListSync("Sync network request triggerd for cv: " + list.view.viewName +
                ", with lmt: " + std::to_string(list.syncTime) + " from: " + std::to_string(defaultFrom));
    collaborators_.networkService->getSyncRecordList({.filter = list.view,
                                                      .module = list.moduleInfo.module,
                                                      .from = defaultFrom,
                                                      .maxDownloadCount = defaultMaxCount,
                                                      .lastModifiedTime = list.syncTime},
                                                     std::move(completion));
}

SyncListFilterRecordDM::Status SyncListFilterRecordDM::networkCompletion(const Answer& answer,
                                                                         const ListOfView& list) const {
    if (!answer || isForeign(*answer, list.moduleInfo.module)) return {Status::Case::syncFailed};
    auto& name = list.view.viewName;
    logListSync("Sync network request completed for cv: " + name + ", with count " + std::to_string(answer->count()));
    auto status = store(*answer, list);
    if (status.which == Status::Case::syncUptoDate) logListSync("Sync upto date for cv: " + name);
    return status;
}

SyncListFilterRecordDM::Status SyncListFilterRecordDM::store(const SyncLFRecordParsedResult& changes,
                                                             const ListOfView& list) const {
    auto& c = collaborators_;
    auto& module = list.moduleInfo.moduleName();
    ListChangesStore::Asked asked{.view = list.view,
                                  .moduleInfo = list.moduleInfo,
                                  .positionId = list.view.viewID + c.userDefaultsSuffix,
                                  .syncTime = list.syncTime,
                                  .lastAdded = list.lastAdded};
    using Outcome = ListChangesStore::Outcome;
    auto outcome = ListChangesStore{c.scope.databaseAdapter, c.recordPersistence,     c.recordDBS,
                                    c.recordMapPersitance,   c.customViewPersistence, c.userDefaultsUtil}
                       .store(changes, asked);
    if (outcome == Outcome::stored || outcome == Outcome::reset)
        c.answersBesideSync.stored(module, changes.info.responseTime);
    if (outcome == Outcome::reset)
        logListSync("Too many changes for cv: " + list.view.viewName + ". " + list.view.viewName +
                    " cvrecordmap is reset.");
    if (outcome != Outcome::stored) return {Status::Case::syncFailed};
    // Rows that come beside "nodata" are stored all the same: after this time nobody would ask for them again.
    if (changes.isEmpty() && changes.info.noData.value_or(true)) return {Status::Case::syncUptoDate};
    return {Status::Case::syncCompleted, c.userDefaultsUtil->getListFilterHasMoreRecord(module, asked.positionId)};
}

}  // namespace tarvo
