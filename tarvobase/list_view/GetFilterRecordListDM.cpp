#include "tarvobase/list_view/GetFilterRecordListDM.h"

#include <algorithm>

#include "kelva_db/Database.h"
#include "platform/Log.h"
#include "platform/ProcessState.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/list_view/OnlineViews.h"
#include "tarvobase/list_view/sql/GetCVRecordsDBS.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/records/sql/CVRecordMapInDatabase.h"
#include "tarvobase/records/wire/WireRecords.h"
#include "tarvobase/usecase/Usecase.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"

namespace tarvo {

namespace {

constexpr std::int64_t defaultFrom = 0;
constexpr std::int64_t defaultLimit = 200;
/// The first page is small so that it comes soon; later pages are large so that a long list takes few requests.
constexpr std::int64_t initialMaxCount = 200;
constexpr std::int64_t defaultMaxCount = 1000;
/// Beyond this offset the server is not asked.
constexpr std::int64_t maxCVRecordCount = 20000;

const std::string duplicateValue = "Duplicate value";

OnlineViews& onlineViews() { return platform::ProcessState::current().get<OnlineViews>(); }

OnlineViews::Key keyOf(const CustomView& view) {
    return {CommonConfigration::sharedInstance().getCurrentAccountID().value_or(""), view.moduleName, view.viewID};
}

/// Returns whether the stored rows of a view come from a former run, so that the first answer of this run replaces
/// them.
bool awaitsReplacement(const CustomView& view) {
    return !view.isOfflineSupported && !onlineViews().isAnswered(keyOf(view));
}

std::int64_t fromOf(const GetListFilterRecordsParams& request) {
    return std::max(defaultFrom, request.from.value_or(defaultFrom));
}

/// Returns the one entry of an answer with its records, or null if the answer has no readable records.
const RParsedResult<WireRecords, RecordListInfo>* recordsOf(const std::optional<WireRecordsParser::Response>& answer) {
    if (!answer || answer->result.empty() || !answer->result.front()) return nullptr;
    auto& entry = *answer->result.front();
    return entry.data ? &entry : nullptr;
}

}  // namespace

void GetFilterRecordListDM::getRecordList(const RequestPtr& request, Answers answers,
                                          std::optional<std::vector<Criteria>> criteria) {
    auto source = request->source();
    if (source == DataSource::none) return;
    auto moduleInfo = parts.moduleInfoDatamanager->getModuleInfo(request->moduleName);
    if (!moduleInfo) return answers.onError(Failure::unknownError());
    auto view = parts.filterPersistence->getCustomView(request->criteriaId, request->moduleName);
    if (!view) return answers.onError(Failure::unknownError());
    auto call = std::make_shared<const Call>(
        Call{request, std::move(answers), std::move(criteria), *std::move(moduleInfo), *std::move(view)});

    bool isFirst = !call->view.isOfflineSupported && onlineViews().noteRequest(keyOf(call->view));
    if (isFirst) parts.userDefaultsUtil->resetListFilter(request->moduleName, request->criteriaId);

    std::vector<Record> records;
    if (!isFirst && source != DataSource::network) records = readLocally(*call);
    auto recordCount = static_cast<std::int64_t>(records.size());
    bool anyRows = recordCount > 0;
    if (anyRows) {
        platform::log(platform::LogLevel::progress, "list view",
                      "Records in DB for " + call->view.viewName + ": " + std::to_string(recordCount));
        call->answers.callback({std::move(records), hasMore(*request)});
    }
    // Rows that are about to be replaced are shown, but they are not part of the list that the server is asked for.
    auto heldCount = awaitsReplacement(call->view) ? 0 : recordCount;
    bool mayAsk = source != DataSource::database && !(source == DataSource::either && anyRows);
    if (mayAsk && canTriggerNetworkRequest(*request, heldCount))
        return triggerNetworkRequest(call, fromOf(*request) + heldCount);
    if (anyRows) return;
    platform::log(platform::LogLevel::progress, "list view",
                  "No record in DB and Server not triggered for " + call->view.viewName);
    call->answers.callback({});
}

std::vector<Record> GetFilterRecordListDM::readLocally(const Call& call) const {
    auto& moduleName = call.request->moduleName;
    auto records = parts.filterRecordDBS->getRecords(
        {.filter = call.view,
         .moduleInfo = call.moduleInfo,
         .request = *call.request,
         .unsyncedCriteria = getUnsyncedCriteria(moduleName, call.view.moduleName, call.moduleInfo.metadata.naming()),
         .criteria = call.criteria});
    return std::move(records).value_or(std::vector<Record>());
}

std::optional<Criteria> GetFilterRecordListDM::getUnsyncedCriteria(const std::string& moduleName,
                                                                   const std::string& viewModule,
                                                                   const FieldIdentifier& naming) const {
    using Kind = RecordDependency::Kind;
    std::vector<Kind> kinds;
    if (viewModule != moduleName) kinds.push_back(Kind::edit);
    kinds.push_back(Kind::add);
    auto ids = parts.transactionManager->getRecordIds(moduleName, kinds, duplicateValue);
    if (!ids || ids->empty()) return std::nullopt;
    return Criteria::in(kelva::quotedName(naming.constant->id), ValueList(ids->begin(), ids->end()));
}

bool GetFilterRecordListDM::hasMore(const GetListFilterRecordsParams& request) const {
    return parts.userDefaultsUtil->getListFilterHasMoreRecord(request.moduleName, request.criteriaId);
}

bool GetFilterRecordListDM::canTriggerNetworkRequest(const GetListFilterRecordsParams& request,
                                                     std::int64_t recordCount) const {
    auto from = fromOf(request);
    if (from > maxCVRecordCount) return false;
    // This is from + limit > recordCount, written so that no limit of a host overflows.
    return hasMore(request) && request.limit.value_or(defaultLimit) > recordCount - from;
}

void GetFilterRecordListDM::triggerNetworkRequest(const CallPtr& call, std::int64_t from) {
    platform::log(platform::LogLevel::progress, "list view", call->view.viewName + ", from " + std::to_string(from));
    parts.networkService->getRecordList({.cv = call->view,
                                         .module = call->moduleInfo.module,
                                         .from = from,
                                         .maxDownloadCount = from == 0 ? initialMaxCount : defaultMaxCount},
                                        [weak = platform::weakSelf(this), call, from](auto answer) {
                                            if (auto self = weak.lock())
                                                self->networkCompletion(call, from, std::move(answer));
                                        });
}

// Runs on the network queue, so answers are stored one after the other, in the order in which they come.
void GetFilterRecordListDM::networkCompletion(const CallPtr& call, std::int64_t from,
                                              std::optional<WireRecordsParser::Response> answer) {
    auto entry = recordsOf(answer);
    if (!entry) return call->answers.onError(Failure::unknownError());
    takeOver(*call, from, *entry->data);
    notePosition(*call, entry->info, answer->responseInfo);
    // A long list may take a while to read, and other completions should not wait for it.
    UsecaseQueue::queue()->async([weak = platform::weakSelf(this), call] {
        if (auto self = weak.lock()) self->answerFinally(*call);
    });
}

void GetFilterRecordListDM::takeOver(const Call& call, std::int64_t from, const WireRecords& records) {
    auto& request = *call.request;
    auto ids = parts.recordPersistance->storePage(records, request.moduleName).value_or(std::vector<std::string>());
    platform::log(
        platform::LogLevel::progress, "list view",
        "Network call success for " + call.view.viewName + ", with count of records " + std::to_string(ids.size()));
    // Only an answer that begins the list can stand for all of it.
    bool replaces = !call.view.isOfflineSupported && from == 0 && onlineViews().noteAnswer(keyOf(call.view));
    if (replaces) parts.filterRecordMapPersistance->delete_(request.criteriaId, request.moduleName);
    parts.filterRecordMapPersistance->store(ids, request.criteriaId, request.moduleName);
}

void GetFilterRecordListDM::notePosition(const Call& call, const RecordListInfo& info,
                                         const ResponseInfo& responseInfo) {
    auto& request = *call.request;
    auto& defaults = *parts.userDefaultsUtil;
    // An answer without `hasMore` leaves the flag as it is, unless the answer says that there is no data.
    if (info.hasMore || info.noData == true)
        defaults.setListFilterHasMoreRecord(info.hasMore.value_or(false), request.moduleName, request.criteriaId);
    auto time = info.serverTime.value_or(static_cast<std::int64_t>(responseInfo.serverTime));
    if (time > 0) defaults.setListFilterRecordSyncTime(time, request.moduleName, request.criteriaId);
}

void GetFilterRecordListDM::answerFinally(const Call& call) const {
    auto records = readLocally(call);
    if (records.empty()) {
        platform::log(platform::LogLevel::progress, "list view",
                      "No record after network call for " + call.view.viewName);
        return call.answers.onSuccess({});
    }
    platform::log(platform::LogLevel::progress, "list view",
                  "Record count after network call for " + call.view.viewName + ": " + std::to_string(records.size()));
    call.answers.onSuccess({std::move(records), hasMore(*call.request)});
}

std::shared_ptr<GetFilterRecordListDM> GetFilterRecordListDM::current() {
    auto stores = Stores::current();
    auto& adapter = stores.databaseAdapter();
    auto map = std::make_shared<CVRecordMapInDatabase>(adapter);
    auto records = std::make_shared<GetCVRecordsDBS>(adapter, map);
    return std::make_shared<GetFilterRecordListDM>(
        Parts{.userDefaultsUtil = std::make_shared<UserDefaultsUtil>(stores.userDefaults),
              .networkService = std::make_shared<GetCVRecordsNetworkService>(),
              .moduleInfoDatamanager = GetModuleInfoAssembler::getModuleInfoDM(),
              .filterPersistence = stores.customViews(),
              .filterRecordMapPersistance = map,
              .filterRecordDBS = records,
              .recordPersistance = records,
              .transactionManager = std::make_shared<EmptyTransactionManager>()});
}

}  // namespace tarvo
