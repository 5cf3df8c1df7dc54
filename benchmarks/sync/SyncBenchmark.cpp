#include <atomic>
#include <future>

#include "benchmarks/record_changes/SignedInAccount.h"
#include "tarvobase/sync/RecordsSyncDataManager.h"

// Measures a sync of all modules that brings nothing, from a server in a process of its own. The floor sends the same
// requests with the same service and drops the answers.
namespace tarvo::benchmarks {

namespace {

/// Counts the rounds that have ended.
class EndedRounds final : public RecordsSyncDataManagerDelegate {
public:
    void expect(std::size_t rounds) {
        left_ = rounds;
        done_ = {};
    }
    void wait() { done_.get_future().wait(); }
    bool wantsSyncResults() const override { return false; }
    void syncEnded(const SyncRound& round) override {
        if (round.outcome == SyncRound::Outcome::finished) ++finished;
        if (--left_ == 0) done_.set_value();
    }
    std::atomic<std::size_t> finished = 0;

private:
    std::atomic<std::size_t> left_ = 0;
    std::promise<void> done_;
};

/// Sends what a round of each module sends.
class BareSyncRequests {
public:
    explicit BareSyncRequests(const std::vector<Module>& modules) : modules_(modules) {
        RecordSyncSettingsPersistance settings(Stores::current().userDefaults);
        for (auto& module : modules) times_.push_back(settings.getLastModifiedTime(module.moduleName).value_or("0"));
    }
    void send() {
        std::atomic<std::size_t> left = modules_.size();
        std::promise<void> done;
        for (std::size_t i = 0; i < modules_.size(); ++i)
            service_->post({{"module", modules_[i].moduleName},
                            {"moduleAPI", modules_[i].apiName},
                            {"lmt", times_[i]},
                            {"count", 0},
                            {"mcount", RecordsSyncDataManager::maximumRecords}},
                           [&](const NetworkAnswer&) {
                               if (--left == 0) done.set_value();
                           });
        done.get_future().wait();
    }

private:
    const std::vector<Module>& modules_;
    std::vector<std::string> times_;
    const std::shared_ptr<RecordsSyncNetworkService> service_ = std::make_shared<RecordsSyncNetworkService>();
};

void syncWithoutChanges(benchmark::State& state) {
    SignedInAccount account;
    if (!account.isReady()) return state.SkipWithError("the download failed");
    auto stores = Stores::current();
    auto manager = RecordsSyncDataManager::make(stores);
    auto ended = std::make_shared<EndedRounds>();
    manager->delegate = ended;
    auto stored = stores.modules()->getAllModules();
    if (!stored) return state.SkipWithError("the modules cannot be read");
    auto modules = std::move(stored).value();
    auto syncAll = [&] {
        ended->expect(modules.size());
        for (auto& module : modules) manager->syncRecords(module);
        ended->wait();
    };
    syncAll();
    // The first round of a module brings all of its records. Modules that the server does not sync are left out.
    std::erase_if(modules, [&](auto& module) {
        auto round = RecordSyncSettingsPersistance(stores.userDefaults).getRound(module.moduleName);
        return !round || round->outcome != SyncRound::Outcome::finished;
    });
    BareSyncRequests bare(modules);
    ended->finished = 0;
    std::size_t rounds = 0;
    Comparison comparison(state);
    for (auto _ : state) {
        rounds += modules.size();
        comparison.round(syncAll, [&] { bare.send(); });
    }
    comparison.finish(0);
    state.counters["modules"] = static_cast<double>(modules.size());
    if (ended->finished != rounds) state.SkipWithError("a round broke off");
}

BENCHMARK(syncWithoutChanges)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace tarvo::benchmarks
