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

/// Runs the steps of the first download and reports the progress to a host. The order of events:
///
///     startInitProcess
///       -> currentUser, alone
///       -> appInit, also if currentUser failed; if it fails, the run stops here and only the failure is reported
///       -> the list: each step is initiated and counted, and the steps without dependencies start in parallel
///       -> each completed step makes others ready, which start at once
///       -> all completed: the account is recorded, the delegate and `InitialProcessComplete` are notified
///
/// If the database did not store what a step received, the run does not claim to be complete: the account is not
/// recorded, and the delegate is notified that the run is incomplete. The run stops at once if that step is appInit.
///
/// The states of a step are `initiated` -> `waitingForDependency` or `readyForExecution` -> `inProgress` ->
/// `completed`. A step that fails is also completed: a later sync brings the missing content, and one refused call must
/// not keep the user from the rest.
///
/// Steps report from whatever queue they work on; everything here happens on one serial queue. The host holds the use
/// case: releasing it ends the run silently, and the flags of the steps let a later run continue from there. Flags and
/// percentage belong to the scope in which the run was made. Once it is outdated, the run stores and flags nothing more
/// and ends as incomplete.
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
        Scope scope;  ///< of all steps
    };
    /// Makes a use case that is the delegate and the error responder of the steps. It reports the percentage of the
    /// last run on the main queue, to the delegate that is set by then.
    static std::shared_ptr<InitProcessUseCase> make(Parts parts);

    void startInitProcess() override;
    /// Returns the steps and what they work with, for a host that puts itself between a step and the run. Called before
    /// the start.
    const Parts& parts() const { return parts_; }

    void didComplete(Downloadable& step, bool status) override;
    void progressDidUpdate(Downloadable& step, int current, int total) override;
    /// Stores the current user, now that the tables exist. Steps of the list read that row.
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
    bool isWhole() const;
    void initialDownloadCompleted();
    void initialDownloadIncomplete();
    void keepAliveUntilReported();
    void progressUpdate(const Downloadable& step, Count count, bool status);
    void calculateProgressPercent(Process process, Count count);
    void reportProgress(bool status);

    Parts parts_;
    const std::shared_ptr<DispatchQueue> synchronizingQueue_ = DispatchQueue::serial("InitialDownloadQueue");
    // Accessed on the queue above after the run has started.
    double processPercent_ = 0;
    bool hasLookupColumns_ = true;  ///< the database stored those that were derived after the metadata
    std::map<Process, Count> downloadableProcess_;
};

}  // namespace tarvo
