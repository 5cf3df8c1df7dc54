#include "tarvobase/sync/RecordsSyncDataManager.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <limits>

#include "platform/Clock.h"
#include "platform/Log.h"
#include "platform/Text.h"
#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/notification/BrenNotificationCenter.h"
#include "tarvobase/notification/SyncObserver.h"
#include "tarvobase/records/RecordUtil.h"
#include "tarvobase/records/sql/DeletedRecords.h"
#include "tarvobase/records/sql/RecordInDatabase.h"
#include "tarvobase/records/sql/UnsentChanges.h"
#include "tarvobase/sync/wire/RecordsSyncParser.h"
#include "tarvobase/utils/TemporaryIds.h"
#include "tarvobase/value_objects/field/FieldList.h"

namespace tarvo {

namespace {

using Outcome = SyncRound::Outcome;

SyncRound::Reason reasonOf(const FailureDetails& failure) {
    using R = SyncRound::Reason;
    switch (failure.reason) {
        case FailureReason::noNetwork:
            return R::noNetwork;
        case FailureReason::notSignedIn:
            return R::notSignedIn;
        case FailureReason::outdated:
            return R::outdated;
        case FailureReason::refused:
            return R::refused;
        default:
            return R::unusableAnswer;
    }
}

std::int64_t numberOf(const std::string& watermark) { return text::toInteger(watermark).value_or(0); }

bool hasRecords(const std::optional<WireRecords>& records) { return recordCount(records) > 0; }

bool hasDeletes(const SyncRecordsResponse& page) { return page.deletedRecordIDs && !page.deletedRecordIDs->empty(); }

bool isEmpty(const SyncRecordsResponse& page) {
    return !hasRecords(page.addedRecords) && !hasRecords(page.editedRecords) && !hasDeletes(page);
}

bool namesOneOf(const std::optional<WireRecords>& records, const std::set<std::string>& recordIds) {
    auto ids = records ? idsOf(*records) : std::vector<std::string>();
    return std::any_of(ids.begin(), ids.end(), [&](auto& id) { return recordIds.contains(id); });
}

bool hasMorePages(const SyncRecordsResponse& page) { return page.resultInfo.hasMore.value_or(false); }

/// Returns the number of records after a page, or nullopt if the page does not advance. A count without bounds would
/// overflow.
std::optional<std::int64_t> receivedAfter(const SyncRecordsResponse& page, std::int64_t from) {
    constexpr auto most = std::numeric_limits<std::int64_t>::max();
    auto count = page.resultInfo.count.value_or(0);
    return count > 0 && count <= most - from ? std::optional(from + count) : std::nullopt;
}

std::vector<std::shared_ptr<RecordsSyncDataManagerDelegate>> listenersOf(const SyncRoundUnderWay::Runners& askers) {
    std::vector<std::shared_ptr<RecordsSyncDataManagerDelegate>> listeners;
    for (auto& asker : askers)
        if (auto listener = asker->roundListener()) listeners.push_back(std::move(listener));
    return listeners;
}

std::optional<std::vector<Record>> presentRecords(const std::optional<WireRecords>& records, const FieldList& fields) {
    return records ? recordsOf(*records, fields) : std::nullopt;
}

}  // namespace

std::shared_ptr<RecordsSyncDataManager> RecordsSyncDataManager::make(Collaborators collaborators) {
    std::shared_ptr<RecordsSyncDataManager> manager(new RecordsSyncDataManager(std::move(collaborators)));
    manager->collaborators_.recordsSyncNetworkService->recordsSyncDelegate = manager;
    return manager;
}

std::shared_ptr<RecordsSyncDataManager> RecordsSyncDataManager::make(
    const Stores& stores, std::shared_ptr<RecordsSyncNetworkServiceProtocol> service) {
    return make({.recordsSyncNetworkService = std::move(service),
                 .recordSyncSettings = std::make_shared<RecordSyncSettingsPersistance>(stores.userDefaults),
                 .recordPersistanceDelegate = RecordInDatabase::make(stores.databaseAdapter()),
                 .metadataPersistance = stores.fields(),
                 .modulePersistance = stores.modules(),
                 .scope = stores.scope,
                 .recordsWithSentChanges = [stores] { return UnsentChanges::recordsWithSentChanges(stores); }});
}

bool RecordsSyncDataManager::syncRecords(const std::string& moduleName) {
    auto module = collaborators_.modulePersistance->getModuleByModuleName(moduleName);
    return module && syncRecords(module.value());
}

bool RecordsSyncDataManager::syncRecords(const Module& module) {
    return SyncRounds::shared().ask(collaborators_.scope, module, expectedSize(module.moduleName),
                                    platform::strongSelf<SyncRoundRunner>(this));
}

SyncRoundSize RecordsSyncDataManager::expectedSize(const std::string& moduleName) const {
    constexpr std::chrono::milliseconds shortTime = std::chrono::hours(1);
    auto round = collaborators_.recordSyncSettings->getRound(moduleName);
    if (!round || round->outcome != Outcome::finished || !round->finishedAt) return SyncRoundSize::any;
    auto now = platform::Clock::now().time_since_epoch();
    auto age = std::chrono::duration_cast<std::chrono::milliseconds>(now).count() - *round->finishedAt;
    return std::abs(age) <= shortTime.count() ? SyncRoundSize::small : SyncRoundSize::any;
}

void RecordsSyncDataManager::runRound(std::shared_ptr<SyncRoundUnderWay> underWay) {
    auto& name = underWay->module.moduleName;
    auto& settings = *collaborators_.recordSyncSettings;
    // A round that breaks says when one last finished. A module may have a watermark without a round.
    auto former = settings.getRound(name);
    auto watermark = former ? former->watermark : settings.getLastModifiedTime(name);
    auto round = std::make_shared<Round>(Round{underWay, watermark.value_or("0"), underWay->progress()});
    if (former) {
        round->progress.watermark = former->watermark;
        round->progress.finishedAt = former->finishedAt;
        underWay->setProgress(round->progress);
    }
    {
        platform::MutexLock lock(mutex_);
        rounds_[name] = round;
    }
    if (underWay->isStopped()) return end(round, Reason::stopped);
    for (auto& listener : listenersOf(underWay->askers())) listener->syncStarted(name);
    BrenNotificationCenter::shared().notify<SyncObserver>(
        false, [name](SyncObserver& observer) { observer.syncStarted(name); });
    requestPage(*round, 0);
}

void RecordsSyncDataManager::requestPage(const Round& round, std::int64_t from) const {
    collaborators_.recordsSyncNetworkService->syncRecordsForModule(round.underWay->module, round.lastModifiedTime, from,
                                                                   maximumRecords);
}

void RecordsSyncDataManager::syncCompleted(SyncResults syncResults, std::int64_t from, const Module& module) {
    std::shared_ptr<Round> round;
    {
        platform::MutexLock lock(mutex_);
        auto found = rounds_.find(module.moduleName);
        if (found == rounds_.end()) return;
        round = found->second;
    }
    if (!syncResults) return end(round, reasonOf(syncResults.error()));
    auto page = std::move(syncResults).value();
    if (auto reason = takePage(*round, page, from)) return end(round, reason);
    if (!hasMorePages(page)) finish(*round, page);
    reportPage(*round, page);
    if (!hasMorePages(page)) return end(round, std::nullopt);
    auto received = receivedAfter(page, from);
    if (!received) return end(round, Reason::noProgress);
    if (round->underWay->isStopped()) return end(round, Reason::stopped);
    // The memory of this page is free before the next one comes.
    page = {};
    requestPage(*round, *received);
}

/// Stores a page and then the note of how far the round is. Returns why it cannot.
std::optional<SyncRound::Reason> RecordsSyncDataManager::takePage(Round& round, const SyncRecordsResponse& page,
                                                                  std::int64_t from) {
    auto& name = round.underWay->module.moduleName;
    auto& info = page.resultInfo;
    if (!collaborators_.scope.isCurrent()) return Reason::outdated;
    if (!hasMetadata(name, page)) return Reason::noMetadata;
    if (!info.responseTime) return Reason::noResponseTime;
    // An edit that is answered after this is still found, and one that is sent after it is newer than the page.
    round.mustBeRepeated = round.mustBeRepeated || mayBeOvertaken(page);
    if (!round.firstResponseTime) round.firstResponseTime = info.responseTime;
    if (auto reason = storePage(page, name)) return reason;
    // The settings of a database that took the place of this one meanwhile know nothing of these rows.
    if (!collaborators_.scope.isCurrent()) return Reason::outdated;

    auto& progress = round.progress;
    ++progress.pages;
    progress.added += static_cast<std::int64_t>(recordCount(page.addedRecords));
    progress.edited += static_cast<std::int64_t>(recordCount(page.editedRecords));
    progress.deleted += page.deletedRecordIDs ? static_cast<std::int64_t>(page.deletedRecordIDs->size()) : 0;
    round.underWay->setProgress(progress);
    auto& settings = *collaborators_.recordSyncSettings;
    settings.storeRecordsSynced(name, receivedAfter(page, from).value_or(from), std::to_string(*info.responseTime));
    if (hasMorePages(page)) {
        auto interrupted = progress;
        interrupted.outcome = Outcome::broken;
        interrupted.reason = Reason::interrupted;
        settings.storeRound(interrupted);
    }
    return std::nullopt;
}

/// Most rounds bring nothing, and need no fields. A module that had some is not asked about them again for such a
/// round, and the one field that nearly every module has is looked for first.
bool RecordsSyncDataManager::hasMetadata(const std::string& moduleName, const SyncRecordsResponse& page) {
    if (isEmpty(page)) {
        platform::MutexLock lock(mutex_);
        if (modulesWithFields_.contains(moduleName)) return true;
    }
    auto& metadata = *collaborators_.metadataPersistance;
    std::string identifier(RecordUtil::getIdentifierFieldName(moduleName, collaborators_.scope.naming));
    auto identifiers = metadata.getFieldMetadata(moduleName, std::vector{identifier}, {});
    if (!identifiers || identifiers->empty()) {
        auto fields = metadata.getFieldMetadata(moduleName);
        if (!fields || fields->empty()) return false;
    }
    platform::MutexLock lock(mutex_);
    modulesWithFields_.insert(moduleName);
    return true;
}

/// Returns whether an answer that waits may be older than the page: values of a record go beneath an edit that the
/// server had before them, or a deleted record is one that was added here.
bool RecordsSyncDataManager::mayBeOvertaken(const SyncRecordsResponse& page) const {
    if (isEmpty(page)) return false;
    auto sent = collaborators_.recordsWithSentChanges();
    if (!sent) return true;
    if (sent->empty()) return false;
    if (hasDeletes(page) && std::any_of(sent->begin(), sent->end(), isTemporaryRecordId)) return true;
    return namesOneOf(page.addedRecords, *sent) || namesOneOf(page.editedRecords, *sent);
}

/// Each list is a commit. A page that is only stored in part is repeated by the next round.
std::optional<SyncRound::Reason> RecordsSyncDataManager::storePage(const SyncRecordsResponse& page,
                                                                   const std::string& moduleName) const {
    auto& records = *collaborators_.recordPersistanceDelegate;
    if (hasRecords(page.addedRecords) && !records.storePage(*page.addedRecords, moduleName)) return Reason::notStored;
    if (hasRecords(page.editedRecords) && !records.modifyPage(*page.editedRecords, moduleName))
        return Reason::notStored;
    auto& database = collaborators_.scope.databaseAdapter;
    if (!hasDeletes(page)) return std::nullopt;
    bool areRemoved = database && database->transaction("delete records of " + moduleName, [&] {
        return removeDeletedRecords(database, records, moduleName, *page.deletedRecordIDs);
    });
    return areRemoved ? std::nullopt : std::optional(Reason::notStored);
}

/// Another program on the same settings may have finished a round of the module during this one. The pages of both came
/// in an unknown order, so the next round must go on from the earlier of their times. Returns that time, or nullopt if
/// the watermark is still the one with which the round began.
std::optional<std::int64_t> RecordsSyncDataManager::timeBesideOther(const Round& round) const {
    auto& settings = *collaborators_.recordSyncSettings;
    auto stored = settings.getLastModifiedTime(round.underWay->module.moduleName).value_or("0");
    if (stored == round.lastModifiedTime) return std::nullopt;
    return std::min(numberOf(stored), *round.firstResponseTime);
}

/// The watermark is the time of the first page: a record that changed after its page was sent would never be asked for
/// again from a later one.
void RecordsSyncDataManager::finish(Round& round, const SyncRecordsResponse& page) const {
    auto& module = round.underWay->module;
    round.progress.outcome = Outcome::finished;
    auto first = *round.firstResponseTime;
    auto time = round.mustBeRepeated ? numberOf(round.lastModifiedTime)
                                     : std::min(first, round.underWay->oldestAnswer().value_or(first));
    auto besideOther = timeBesideOther(round);
    if (besideOther || !round.mustBeRepeated)
        round.progress.watermark = std::to_string(std::min(time, besideOther.value_or(time)));
    round.progress.finishedAt = page.resultInfo.responseTime;
    collaborators_.recordSyncSettings->storeRound(round.progress);
    BrenNotificationCenter::shared().notify<SyncObserver>(
        false,
        [name = module.moduleName, type = module.type](SyncObserver& observer) { observer.syncFinished(name, type); });
}

void RecordsSyncDataManager::reportPage(const Round& round, const SyncRecordsResponse& page) const {
    auto& name = round.underWay->module.moduleName;
    auto listeners = listenersOf(round.underWay->askers());
    for (auto& listener : listeners) listener->syncProgressed(round.progress);
    std::erase_if(listeners, [](auto& listener) { return !listener->wantsSyncResults(); });
    if (listeners.empty()) return;
    auto metadata = collaborators_.metadataPersistance->getFieldMetadata(name);
    FieldList fields(name, metadata ? *std::move(metadata) : FieldMetadataPersistanceDelegate::Fields(), {});
    auto added = presentRecords(page.addedRecords, fields), edited = presentRecords(page.editedRecords, fields);
    for (auto& listener : listeners) listener->syncResultsFetched(name, added, edited, page.deletedRecordIDs);
}

void RecordsSyncDataManager::storeBroken(Round& round) const {
    auto& settings = *collaborators_.recordSyncSettings;
    if (auto time = round.firstResponseTime ? timeBesideOther(round) : std::nullopt) {
        round.progress.watermark = std::to_string(*time);
        settings.storeLastModifiedTime(*round.progress.watermark, round.progress.moduleName);
    }
    settings.storeRound(round.progress);
}

void RecordsSyncDataManager::end(const std::shared_ptr<Round>& round, std::optional<Reason> reason) {
    auto& name = round->underWay->module.moduleName;
    {
        platform::MutexLock lock(mutex_);
        rounds_.erase(name);
    }
    if (reason) {
        round->progress.outcome = Outcome::broken;
        round->progress.reason = reason;
        if (collaborators_.scope.isCurrent()) storeBroken(*round);
        platform::log(platform::LogLevel::warning, "sync",
                      "the round of " + name + " broke off: " + std::string(caseName(*reason)));
    }
    round->underWay->setProgress(round->progress);
    for (auto& listener : listenersOf(round->underWay->askers())) listener->syncEnded(round->progress);
    auto dismissed = SyncRounds::shared().end(collaborators_.scope, *round->underWay);
    for (auto& listener : listenersOf(dismissed)) listener->syncEnded(round->progress);
}

std::vector<SyncRound> RecordsSyncDataManager::rounds(const Stores& stores) {
    std::map<std::string, SyncRound> rounds;
    for (auto& round : RecordSyncSettingsPersistance(stores.userDefaults).getRounds()) rounds[round.moduleName] = round;
    for (auto& round : SyncRounds::shared().underWay(stores.scope)) rounds[round.moduleName] = round;
    std::vector<SyncRound> list;
    for (auto& [name, round] : rounds) list.push_back(round);
    return list;
}

}  // namespace tarvo
