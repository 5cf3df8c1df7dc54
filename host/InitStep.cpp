#include "host/InitStep.h"

#include <atomic>

#include "tarvobase/configuration/UserDefaults.h"
#include "tarvobase/init_process/steps/AppInitDataManager.h"
#include "tarvobase/network_layer/NetworkAccess.h"

namespace tarvo::host {

namespace {

/// Listens to the step, and reports its first end.
class InitListener final : public CommonErrorRelay, public AppInitDataManagerDelegate, public DownloadProgressible {
public:
    explicit InitListener(std::function<void(InitOutcome)> whenEnded) : whenEnded_(std::move(whenEnded)) {}

    void appInitDataFetchedAndSaved(AppInitDataManager&) override { end({}); }
    void didComplete(Downloadable&, bool isStored) override {
        if (!isStored) end({.isRefusedByDatabase = true});
    }
    void progressDidUpdate(Downloadable&, int, int) override {}

private:
    void relay(const CommonErrorNotice& notice) override { end({notice}); }
    void end(InitOutcome outcome) {
        if (hasEnded_.exchange(true)) return;
        // Runs after the answer under way has finished its own bookkeeping.
        networkQueue()->async([whenEnded = whenEnded_, outcome = std::move(outcome)] { whenEnded(outcome); });
    }

    const std::function<void(InitOutcome)> whenEnded_;
    std::atomic<bool> hasEnded_ = false;
};

/// The step and its listener, which the work holds weakly.
struct Run {
    std::shared_ptr<InitListener> listener;
    std::shared_ptr<AppInitDataManager> step;
};

}  // namespace

std::shared_ptr<void> runInitStep(std::shared_ptr<DatabaseAdapter> database,
                                  std::function<void(InitOutcome)> whenEnded) {
    auto run = std::make_shared<Run>();
    run->listener = std::make_shared<InitListener>(std::move(whenEnded));
    run->step = AppInitDataManager::make(std::move(database), BrenUserDefaults::ofCurrentAccount());
    run->step->appInitdelegate = run->listener;
    run->step->delegate = run->listener;
    run->step->errorResponder = run->listener;
    run->step->execute();
    return run;
}

}  // namespace tarvo::host
