#include "tarvobase/init_process/steps/InitCVRecordsDM.h"

#include <algorithm>

#include "platform/Log.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/records/sql/RecordInDatabase.h"
#include "tarvobase/records/wire/WireRecords.h"

namespace tarvo {

InitCVRecordsDM::InitCVRecordsDM(Persistance persistance, std::shared_ptr<InitCVRecordsNSP> networkService)
    : BatchedDownloadable(Feature::initialRecords,
                          {.step = "InitCVRecords", .requested = " requested for ", .completed = " request completed"},
                          persistance.scope),
      persistance_(std::move(persistance)),
      networkService_(std::move(networkService)) {
    dependencyList = {{.processName = Process::metadata}, {.processName = Process::customviews}};
}

std::shared_ptr<InitCVRecordsDM> InitCVRecordsDM::make(const std::shared_ptr<DatabaseAdapter>& databaseAdapter,
                                                       const std::shared_ptr<UserDefaultsProtocol>& userDefaults,
                                                       std::shared_ptr<InitCVRecordsNSP> networkService) {
    auto stores = Stores::over(databaseAdapter, userDefaults);
    return std::make_shared<InitCVRecordsDM>(
        Persistance{.batches = {.moduleDAO = stores.modules(),
                                .settingDAO = stores.settings(),
                                .userDefaultsUtil = stores.userDefaultsUtil()},
                    .cvDAO = stores.customViews(),
                    .recordDAO = RecordInDatabase::make(databaseAdapter),
                    .scope = stores.scope,
                    .recordSettingsPersistance = std::make_shared<RecordSyncSettingsPersistance>(stores.userDefaults),
                    .answersBesideSync = AnswersBesideSync(stores.scope, stores.userDefaults)},
        std::move(networkService));
}

std::shared_ptr<ModuleBatch> InitCVRecordsDM::makeModuleBatch() const {
    return std::make_shared<CVModuleBatch>(Feature::initialRecords, persistance_.batches, persistance_.cvDAO);
}

int InitCVRecordsDM::totalCallsCount() const { return std::max(1, BatchedDownloadable::totalCallsCount()); }

void InitCVRecordsDM::getCustomViewRecords(const std::optional<std::vector<Module>>& modules, Callback onSuccess,
                                           Callback onFailure) {
    getRecords(modules, Callbacks{std::move(onSuccess), std::move(onFailure)});
}

void InitCVRecordsDM::getRecords(const std::optional<std::vector<Module>>& modules,
                                 std::optional<Callbacks> callbacks) {
    auto batches = makeModuleBatch();
    // An empty list requests nothing; an absent list requests all modules.
    if (!modules || !modules->empty()) batches->initiateBatch(modules.value_or(std::vector<Module>()));
    run(std::move(batches), std::move(callbacks));
}

void InitCVRecordsDM::request(const std::vector<Module>& modules) {
    auto params = paramsOf(modules);
    std::vector<Module> asked;
    for (auto& one : params) asked.push_back(one.module);
    networkService_->getCVRecords(params, [weak = platform::weakSelf(this), asked](NetworkAnswer answer) {
        auto self = weak.lock();
        if (!self) return;
        self->batchAnswered(
            asked, std::move(answer), [](auto body) { return WireRecordsParser::parse(body); },
            [&self](auto& records, auto& info) { return self->store(records, info); });
    });
}

std::vector<CVRecordsParams> InitCVRecordsDM::paramsOf(const std::vector<Module>& modules) const {
    auto batches = std::static_pointer_cast<CVModuleBatch>(runningBatches());
    std::vector<CVRecordsParams> params;
    for (auto& module : modules) {
        auto view = batches->moduleCVMap.find(module.moduleName);
        if (view != batches->moduleCVMap.end()) params.push_back({module, view->second});
    }
    return params;
}

InitCVRecordsDM::Outcome InitCVRecordsDM::store(const WireRecords& records, const RecordListInfo& info) {
    // The table of the records is unknown.
    if (!info.moduleName) {
        platform::log(platform::LogLevel::warning, "first download",
                      "InitCVRecords of a module left out: the answer does not name it");
        return Outcome::rejected;
    }
    auto& moduleName = *info.moduleName;
    auto outcome = storePage(records, moduleName);
    if (outcome != Outcome::stored) return outcome;
    persistance_.answersBesideSync.stored(moduleName, info.responseTime);
    auto& settings = *persistance_.recordSettingsPersistance;
    auto number = settings.getNumberOfRecordsDownloaded(moduleName).value_or(0);
    settings.storeNumberOfRecordsDownloaded(number + 1, moduleName);
    return outcome;
}

InitCVRecordsDM::Outcome InitCVRecordsDM::storePage(const WireRecords& records, const std::string& moduleName) const {
    auto& recordDAO = *persistance_.recordDAO;
    if (recordDAO.storePage(records, moduleName)) return Outcome::stored;
    // A second attempt, around which the database can store anything else, shows whether the page itself is at fault.
    bool isStored = false;
    auto outcome = commit("first records of " + moduleName,
                          [&] { isStored = recordDAO.storePage(records, moduleName).has_value(); });
    if (isStored || outcome == Outcome::failed) return outcome;
    // Tables that the database did not store come with the metadata of a later run.
    if (!hasMetadata(moduleName)) return Outcome::failed;
    platform::log(platform::LogLevel::warning, "first download",
                  "InitCVRecords of " + moduleName + " left out: its tables do not take them");
    return Outcome::rejected;
}

bool InitCVRecordsDM::hasMetadata(const std::string& moduleName) const {
    return persistance_.batches.userDefaultsUtil.isCompleted(std::string(rawText(Process::metadata)) + "_" +
                                                             moduleName);
}

void InitCVRecordsDM::allBatchesCompleted() {
    callBack();
    endRun();
}

}  // namespace tarvo
