#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks/Support.h"
#include "platform/MainQueue.h"
#include "tarvobase/configuration/DatabaseConstants.h"
#include "tarvobase/configuration/UserDefaults.h"
#include "tarvobase/database_layer/KelvaDatabasePersistance.h"
#include "tarvobase/init_process/InitProcessAssembler.h"
#include "tarvobase/init_process/steps/InitCVRecordsDM.h"
#include "tarvobase/metadata/GetFieldListDM.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/records/sql/RecordInDatabase.h"
#include "tarvobase/storage/InMemoryStorage.h"
#include "tarvobase/value_objects/view/CustomViewInDatabase.h"

// A first download as an application runs it. The step of the records gets its service and its record tables wrapped,
// which is possible since it takes both as interfaces. So the times are those of the run itself.
namespace tarvo::benchmarks {

/// The time that the step of the records spends on its parts, in seconds. Only the network queue writes the members,
/// except the start.
struct Split {
    using Clock = std::chrono::steady_clock;
    Clock::time_point asked, answered, parsed, ended;
    double handling = 0;  ///< of answers, beginning with the body
    double parse = 0;     ///< from the body to the first stored records
    double store = 0;
    std::size_t requests = 0, modules = 0, records = 0;
    std::vector<platform::Data> bodies;

    static double between(Clock::time_point from, Clock::time_point to) {
        return std::chrono::duration<double>(to - from).count();
    }
    /// The time in which there was nothing to parse or store.
    double network() const { return between(asked, ended) - handling; }
};

class WatchedService final : public InitCVRecordsNSP {
public:
    explicit WatchedService(std::shared_ptr<Split> split) : split_(std::move(split)) {}
    void getCVRecords(const std::vector<CVRecordsParams>& params, NetworkCompletion callback) override {
        std::call_once(first_, [this] { split_->asked = Split::Clock::now(); });
        service_->getCVRecords(
            params, [split = split_, count = params.size(), callback = std::move(callback)](NetworkAnswer answer) {
                ++split->requests;
                split->modules += count;
                split->bodies.push_back(answer.body);
                split->answered = split->parsed = Split::Clock::now();
                callback(std::move(answer));
                split->ended = Split::Clock::now();
                split->parse += Split::between(split->answered, split->parsed);
                split->handling += Split::between(split->answered, split->ended);
            });
    }

private:
    const std::shared_ptr<Split> split_;
    const std::shared_ptr<InitCVRecordsNS> service_ = std::make_shared<InitCVRecordsNS>();
    std::once_flag first_;
};

class WatchedRecords final : public RecordInDatabase {
public:
    WatchedRecords(const std::shared_ptr<DatabaseAdapter>& database, std::shared_ptr<Split> split)
        : RecordInDatabase(database, FieldListAssembler::getFieldListDM(database)), split_(std::move(split)) {}
    using RecordInDatabase::storePage;
    std::optional<Names> storePage(const WireRecords& wireRecords, const std::string& moduleName,
                                   PageWork alongside) override {
        auto start = Split::Clock::now();
        if (split_->parsed == split_->answered) split_->parsed = start;
        auto ids = RecordInDatabase::storePage(wireRecords, moduleName, alongside);
        split_->store += Split::between(start, Split::Clock::now());
        split_->records += ids ? ids->size() : 0;
        return ids;
    }

private:
    const std::shared_ptr<Split> split_;
};

class SignedIn final : public AuthenticationProtocol {
public:
    AuthenticationType authenticationType() override { return AuthenticationType::oauth; }
    std::optional<std::vector<std::string>> loggedInUsers() override { return std::vector<std::string>{"42"}; }
    std::optional<std::string> currentUser() override { return "42"; }
    void authToken(const std::string&, TokenCompletion completion) override { completion("token-of-42"); }
};

class DownloadListener final : public CommonErrorRelay, public InitProcessUseCaseDelegate {
public:
    void initProcessCompleted(InitProcessUseCaseProtocol&) override { isCompleted = true; }

    std::atomic<bool> isCompleted = false, hasFailed = false;

private:
    void relay(const CommonErrorNotice&) override { hasFailed = true; }
};

/// Runs the download into an open, empty database. Returns false if it fails or does not end in half an hour.
inline bool download(const std::shared_ptr<DatabaseAdapter>& database, const std::shared_ptr<Split>& split) {
    auto defaults = std::make_shared<BrenUserDefaults>();
    auto memory = std::make_shared<InMemoryStorage>();
    BaseAssemblerWithDatabaseUserDefaults adapters(database, memory, std::make_shared<DatabaseConstants>(), defaults);
    auto parts = makeInitProcessUseCase(adapters, InitSteps::all)->parts();
    Stores stores(Scope::over(database), memory, BrenUserDefaults::ofCurrentAccount());
    InitCVRecordsDM::Persistance persistance{
        .batches = {.moduleDAO = stores.modules(),
                    .settingDAO = stores.settings(),
                    .userDefaultsUtil = UserDefaultsUtil(defaults)},
        .cvDAO = std::make_shared<CustomViewInDatabase>(database),
        .recordDAO = std::make_shared<WatchedRecords>(database, split),
        .scope = stores.scope,
        .recordSettingsPersistance = std::make_shared<RecordSyncSettingsPersistance>(defaults),
        .answersBesideSync = AnswersBesideSync(stores.scope, defaults)};
    for (auto& step : parts.downloadableList)
        if (step->processName() == Process::initialRecords)
            step = std::make_shared<InitCVRecordsDM>(persistance, std::make_shared<WatchedService>(split));
    auto run = InitProcessUseCase::make(std::move(parts));
    auto listener = std::make_shared<DownloadListener>();
    run->delegate = listener;
    run->startInitProcess();
    MainQueue::shared()->runUntil([&] { return listener->isCompleted || listener->hasFailed; },
                                  std::chrono::minutes(30));
    return listener->isCompleted && !listener->hasFailed;
}

}  // namespace tarvo::benchmarks
