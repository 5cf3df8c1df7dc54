#include "host/InitStep.h"

#include <atomic>

#include "bridge/Recorder.h"
#include "tarvobase/configuration/UserDefaults.h"
#include "tarvobase/init_process/steps/AppInitDataManager.h"
#include "tarvobase/network_layer/NetworkAccess.h"

namespace tarvo::host {

namespace {

constexpr std::string_view storedNotice = "appInitDataFetchedAndSaved";

class InitRecorder final : public bridge::CommonErrorRecorder, public AppInitDataManagerDelegate {
public:
    void appInitDataFetchedAndSaved(AppInitDataManager& by) override {
        told(storedNotice, {{"by", bridge::toJson(by.processName())}});
    }
};

/// The step and who listens to it: both are held weakly by the work.
struct Run {
    std::shared_ptr<InitRecorder> recorder;
    std::shared_ptr<AppInitDataManager> step;
    std::atomic<bool> ended = false;
};

}  // namespace

bool InitOutcome::isStored() const { return notice == storedNotice; }

std::shared_ptr<void> runInitStep(std::shared_ptr<DatabaseAdapter> database,
                                  std::function<void(InitOutcome)> whenEnded) {
    auto run = std::make_shared<Run>();
    run->recorder = std::make_shared<InitRecorder>();
    run->recorder->listener = [weak = std::weak_ptr(run), whenEnded = std::move(whenEnded)](std::string_view name,
                                                                                            ValueMap arguments) {
        auto run = weak.lock();
        if (!run || run->ended.exchange(true)) return;
        // Behind the answer under way, which is not yet done with its own bookkeeping.
        networkQueue()->async(
            [whenEnded, outcome = InitOutcome{std::string(name), std::move(arguments)}] { whenEnded(outcome); });
    };
    run->step = AppInitDataManager::make(std::move(database), std::make_shared<BrenUserDefaults>());
    run->step->appInitdelegate = run->recorder;
    run->step->errorResponder = run->recorder;
    run->step->execute();
    return run;
}

}  // namespace tarvo::host
