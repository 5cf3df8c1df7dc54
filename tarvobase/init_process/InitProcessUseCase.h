#pragma once

#include <map>
#include <memory>
#include <vector>

#include "tarvobase/init_process/InitProcessDataManager.h"
#include "tarvobase/init_process/InitProcessProtocols.h"
#include "tarvobase/init_process/steps/AppInitDataManager.h"
#include "tarvobase/init_process/steps/CurrentUserStep.h"
#include "tarvobase/metadata/PopulateRelatedModulesDM.h"
#include "tarvobase/usecase/NoticesOnMainQueue.h"
#include "tarvobase/utils/UserDefaultsUtil.h"

namespace tarvo {

/// Runs the steps of the first download and tells a host how far it is. The order of events:
///
///     startInitProcess
///       -> currentUser, alone
///       -> appInit, whatever became of currentUser; unusable: the run stays here and only the failure is told
///       -> the list: each step is initiated and counted, those without dependencies start side by side
///       -> each completed step makes others ready, which start at once
///       -> all completed: the account is noted, the delegate and `InitialProcessComplete` hear of it
///
/// A step's own way is `initiated` -> `waitingForDependency` or `readyForExecution` -> `inProgress` -> `completed`.
/// A step that fails is completed all the same: what it lacks comes with a later sync, and one refused call must not
/// keep the user from the rest.
///
/// Steps report from whatever queue they work on; everything here happens on one serial queue. The host holds the use
/// case: letting it go ends the run quietly, and the flags of the steps let a later run begin where this one stopped.
/// Flags and percentage belong to the account of the moment, so it must be let go before another account is chosen.
class InitProcessUseCase final : public InitProcessUseCaseProtocol,
                                 public DownloadProgressible,
                                 public AppInitDataManagerDelegate,
                                 public AppInitDataErrorProtocolWithChaining,
                                 public CommonErrorsOnMainQueue {
public:
    struct Parts {
        std::shared_ptr<InitProcessDataManagerProtocol> initProcessDataManager;
        std::shared_ptr<CurrentUserStep> currentUserDM;
        std::shared_ptr<AppInitDataManager> appInitDM;
        UserDefaultsUtil userDefaultsUtil;
        std::vector<std::shared_ptr<Downloadable>> downloadableList;
        std::shared_ptr<PopulateRelatedModulesDMP> populateRelatedModulesDM;
    };
    /// Becomes the delegate of the steps and hears of their failures. Reports the percentage of the last run on the
    /// main queue, to the delegate that is set by then.
    static std::shared_ptr<InitProcessUseCase> make(Parts parts);

    void startInitProcess() override;
    /// The steps and what they work with, for a host that puts itself between a step and the run. Before the start.
    const Parts& parts() const { return parts_; }

    void didComplete(Downloadable& step, bool status) override;
    void progressDidUpdate(Downloadable& step, int current, int total) override;
    /// The tables are there: the user who was kept is stored, since steps of the list read that row.
    void appInitDataFetchedAndSaved(AppInitDataManager& by) override;

    std::shared_ptr<AppInitDataErrorProtocol> nextAppInitDataErrorProtocolResponder() override {
        return delegate.lock();
    }

private:
    struct Count {
        int total;
        int current;
    };

    explicit InitProcessUseCase(Parts parts);
    void prepareSteps();
    void continueDownloadableExecution(Downloadable& step, bool status);
    void initiateList(bool status);
    void updateDownloadable(Downloadable& step, bool status);
    void initialDownloadCompleted();
    void stayUntilReported();
    void progressUpdate(const Downloadable& step, Count count, bool status);
    void calculateProgressPercent(Process process, Count count);
    void reportProgress(bool status);

    Parts parts_;
    const std::shared_ptr<DispatchQueue> synchronizingQueue_ = DispatchQueue::serial("InitialDownloadQueue");
    // On the queue above from the start of the run on.
    double processPercent_ = 0;
    std::map<Process, Count> downloadableProcess_;
};

}  // namespace tarvo
