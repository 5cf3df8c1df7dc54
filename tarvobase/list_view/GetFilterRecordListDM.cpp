#include "tarvobase/list_view/GetFilterRecordListDM.h"

#include <algorithm>
#include <set>
#include <string_view>

#include "kelva_db/Database.h"
#include "platform/Log.h"
#include "tarvobase/list_view/OnlineViews.h"
#include "tarvobase/list_view/sql/GetCVRecordsDBS.h"
#include "tarvobase/list_view/wire/ListPage.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/records/sql/CVRecordMapInDatabase.h"
#include "tarvobase/records/sql/CustomViewQueryFormation.h"
#include "tarvobase/transaction/UnlistedRecordsInDatabase.h"
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

std::int64_t fromOf(const GetListFilterRecordsParams& request) {
    return std::max(defaultFrom, request.from.value_or(defaultFrom));
}

std::string idColumnOf(const ModuleInfo& moduleInfo) {
    return kelva::quotedName(moduleInfo.metadata.naming().constant->id);
}

bool isNarrowed(const GetListFilterRecordsParams& request, const std::optional<std::vector<Criteria>>& criteria) {
    return (request.filters && !request.filters->empty()) || (criteria && !criteria->empty());
}

}  // namespace

void GetFilterRecordListDM::getRecordList(const RequestPtr& request, Answers answers,
                                          std::optional<std::vector<Criteria>> criteria) {
    auto source = request->source();
    if (source == DataSource::none) return;
    auto moduleInfo = parts.moduleInfoDatamanager->getModuleInfo(request->moduleName);
    if (!moduleInfo) return answers.onError(Failure::unknownError(FailureReason::noSuchModule));
    auto view = parts.filterPersistence->getCustomView(request->criteriaId, request->moduleName);
    if (!view) return answers.onError(Failure::unknownError(FailureReason::noSuchView));
    auto call = std::make_shared<const Call>(
        Call{request, std::move(answers), std::move(criteria), *std::move(moduleInfo), *std::move(view)});

    bool mayAsk = source != DataSource::database;
    bool isFirst = mayAsk && OnlineViews::shared().addRequest(parts.account, call->view);
    if (isFirst) parts.userDefaultsUtil->resetListFilter(request->moduleName, request->criteriaId);

    Page page;
    if (!isFirst && source != DataSource::network) page = readLocally(*call);
    bool anyRows = !page.records.empty();
    auto recordCount = mayAsk ? listedCount(*call, page) : 0;
    if (anyRows) {
        platform::log(platform::LogLevel::progress, "list view",
                      "Records in DB for " + call->view.viewName + ": " + std::to_string(page.records.size()));
        call->answers.callback({std::move(page.records), hasMore(*request)});
    }
    if (mayAsk && !(source == DataSource::either && recordCount > 0))
        if (auto position = firstPosition(*call, recordCount)) return triggerNetworkRequest(call, *position);
    if (!anyRows) answerStored(*call);
}

/// Answers a call for which no row has been read and the server is not asked.
void GetFilterRecordListDM::answerStored(const Call& call) const {
    auto records = readLocally(call).records;
    if (!records.empty()) return call.answers.callback({std::move(records), hasMore(*call.request)});
    platform::log(platform::LogLevel::progress, "list view",
                  "No record in DB and Server not triggered for " + call.view.viewName);
    call.answers.callback({});
}

GetFilterRecordListDM::Page GetFilterRecordListDM::readLocally(const Call& call) const {
    Page page;
    page.unlisted = unlistedRecords(call);
    page.records = rowsOf(call, getUnsyncedCriteria(call, page.unlisted), {});
    return page;
}

/// Returns the rows of a page. `unsynced` selects records besides the view's map; `more` are further conditions.
std::vector<Record> GetFilterRecordListDM::rowsOf(const Call& call, std::optional<Criteria> unsynced,
                                                  std::vector<Criteria> more) const {
    if (call.criteria) more.insert(more.end(), call.criteria->begin(), call.criteria->end());
    auto records = parts.filterRecordDBS->getRecords(
        {.filter = call.view,
         .moduleInfo = call.moduleInfo,
         .request = *call.request,
         .unsyncedCriteria = std::move(unsynced),
         .criteria = std::move(more),
         // Once the server has said that there are no more records, an empty map is an empty list.
         .conditionOfEmptyMap = hasMore(*call.request) ? &call.view : nullptr});
    return std::move(records).value_or(std::vector<Record>());
}

UnlistedRecords GetFilterRecordListDM::unlistedRecords(const Call& call) const {
    using Kind = RecordDependency::Kind;
    auto& request = *call.request;
    UnlistedRecordsQuery query{
        .moduleName = request.moduleName,
        .viewId = request.criteriaId,
        .refusedKinds = {Kind::add},
        .refusal = duplicateValue,
        .lastAdded = parts.userDefaultsUtil->getListFilterLastAddedRecord(request.moduleName, request.criteriaId)};
    if (call.view.moduleName != request.moduleName) query.refusedKinds.push_back(Kind::edit);
    return parts.unlistedRecords->getUnlistedRecords(query).value_or(UnlistedRecords());
}

/// Returns the condition of the records that the view shows besides its map. Only the server can evaluate some views;
/// records that were added here are not shown in them until it has, since each such view would show them all.
std::optional<Criteria> GetFilterRecordListDM::getUnsyncedCriteria(const Call& call,
                                                                   const UnlistedRecords& unlisted) const {
    auto isIn = [&](const std::vector<std::string>& ids) {
        return Criteria::in(idColumnOf(call.moduleInfo), ValueList(ids.begin(), ids.end()));
    };
    std::vector<Criteria> unsynced;
    if (!unlisted.refused.empty()) unsynced.push_back(isIn(unlisted.refused));
    if (!unlisted.added.empty())
        if (auto condition = CustomViewQueryFormation::getWhereCondition(call.view, call.moduleInfo.metadata)) {
            auto isAdded = isIn(unlisted.added);
            unsynced.push_back(condition->empty()
                                   ? std::move(isAdded)
                                   : Criteria::and_({std::move(isAdded), Criteria::custom("(" + *condition + ")")}));
        }
    return unsynced.empty() ? std::nullopt : std::optional(Criteria::or_(std::move(unsynced)));
}

/// Returns how many rows the page would have without the records that the server has not given: they fill a page, but
/// not the server's list.
std::int64_t GetFilterRecordListDM::listedCount(const Call& call, const Page& page) const {
    auto shown = static_cast<std::int64_t>(page.records.size());
    if (page.unlisted.isEmpty()) return shown;
    std::set<std::string_view> ids(page.unlisted.added.begin(), page.unlisted.added.end());
    ids.insert(page.unlisted.refused.begin(), page.unlisted.refused.end());
    auto unlisted = std::count_if(page.records.begin(), page.records.end(),
                                  [&](auto& record) { return ids.contains(record.recordId()); });
    bool isFull = call.request->limit && shown >= *call.request->limit;
    if (unlisted == 0 || !isFull) return shown - unlisted;
    // They may have pushed rows of the list off the page.
    auto isListed = Criteria::notIn(idColumnOf(call.moduleInfo), ValueList(ids.begin(), ids.end()));
    return static_cast<std::int64_t>(rowsOf(call, std::nullopt, {std::move(isListed)}).size());
}

bool GetFilterRecordListDM::hasMore(const GetListFilterRecordsParams& request) const {
    return parts.userDefaultsUtil->getListFilterHasMoreRecord(request.moduleName, request.criteriaId);
}

/// Returns how many records of the list the client holds. Rows that are about to be replaced are shown, but they are
/// not part of the list that the server is asked for.
std::int64_t GetFilterRecordListDM::heldCount(const Call& call) const {
    if (OnlineViews::shared().awaitsReplacement(parts.account, call.view)) return 0;
    auto& request = *call.request;
    return parts.filterRecordMapPersistance->count(request.criteriaId, request.moduleName).value_or(0);
}

bool GetFilterRecordListDM::canTriggerNetworkRequest(const Call& call, std::int64_t recordCount) const {
    auto from = fromOf(*call.request);
    if (from > maxCVRecordCount) return false;
    bool mayHaveMore = hasMore(*call.request) || OnlineViews::shared().awaitsReplacement(parts.account, call.view);
    // This is from + limit > recordCount, written so that no limit of a host overflows.
    return mayHaveMore && call.request->limit.value_or(defaultLimit) > recordCount - from;
}

/// Returns the position to ask the server from after `recordCount` rows were read, or nullopt if it is not asked.
std::optional<std::int64_t> GetFilterRecordListDM::firstPosition(const Call& call, std::int64_t recordCount) const {
    if (!canTriggerNetworkRequest(call, 0)) return std::nullopt;
    auto held = heldCount(call);
    // Rows that only the view's own condition found are not held.
    if (held == 0) return 0;
    if (!canTriggerNetworkRequest(call, recordCount)) return std::nullopt;
    // The number of rows that pass filters says nothing about how far the list reaches.
    if (isNarrowed(*call.request, call.criteria)) return held;
    return std::min(fromOf(*call.request) + recordCount, held);
}

/// Returns the position of a further request after an answer was stored, or nullopt if the page can be answered. Only a
/// later page may need one: the list is asked for from the end of its map, which may lie before the page.
std::optional<std::int64_t> GetFilterRecordListDM::nextPosition(const Call& call, std::int64_t from) const {
    auto pageStart = fromOf(*call.request);
    auto pageEnd = pageStart + std::min(call.request->limit.value_or(defaultLimit), defaultMaxCount);
    auto held = heldCount(call);
    bool isShort = held > from && held < pageEnd;
    return pageStart > 0 && isShort && hasMore(*call.request) ? std::optional(held) : std::nullopt;
}

void GetFilterRecordListDM::triggerNetworkRequest(const CallPtr& call, std::int64_t from) {
    platform::log(platform::LogLevel::progress, "list view", call->view.viewName + ", from " + std::to_string(from));
    auto& request = *call->request;
    Asked asked{
        .from = from,
        .lastAdded = from == 0 ? parts.unlistedRecords->lastAddedRecord() : 0,
        .syncTime = parts.userDefaultsUtil->getListFilterRecordSyncTime(request.moduleName, request.criteriaId)};
    parts.networkService->getRecordList({.cv = call->view,
                                         .module = call->moduleInfo.module,
                                         .from = from,
                                         .maxDownloadCount = from == 0 ? initialMaxCount : defaultMaxCount},
                                        [weak = platform::weakSelf(this), call, asked](auto page) {
                                            if (auto self = weak.lock()) self->networkCompletion(call, asked, page);
                                        });
}

// Runs on the network queue, so answers are stored one after the other, in the order in which they come.
void GetFilterRecordListDM::networkCompletion(const CallPtr& call, Asked asked,
                                              const Result<ListPage, FailureDetails>& page) {
    if (!page) return call->answers.onError(Failure::unknownError(page.error()));
    using Outcome = ListPageStore::Outcome;
    auto outcome = ListPageStore{parts.account, parts.recordPersistance, parts.filterRecordMapPersistance,
                                 parts.filterPersistence, parts.userDefaultsUtil}
                       .store(*page, call->view, asked);
    if (outcome == Outcome::failed) return call->answers.onError(Failure::unknownError(FailureReason::notStored));
    if (auto& beside = parts.answersBesideSync) beside->stored(call->view.moduleName, page->info.responseTime);
    auto next = outcome == Outcome::stored ? nextPosition(*call, asked.from) : std::nullopt;
    if (next) return triggerNetworkRequest(call, *next);
    // A long list may take a while to read, and other completions should not wait for it.
    UsecaseQueue::queue()->async([weak = platform::weakSelf(this), call] {
        if (auto self = weak.lock()) self->answerFinally(*call);
    });
}

void GetFilterRecordListDM::answerFinally(const Call& call) const {
    auto records = readLocally(call).records;
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
              .unlistedRecords = std::make_shared<UnlistedRecordsInDatabase>(stores),
              .account = stores.scope.account,
              .answersBesideSync = AnswersBesideSync(stores.scope, stores.userDefaults)});
}

}  // namespace tarvo
