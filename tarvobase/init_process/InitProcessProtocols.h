#pragma once

#include <memory>

#include "tarvobase/usecase/DelegateUseCase.h"
#include "tarvobase/usecase/ErrorProtocols.h"

namespace tarvo {

class InitProcessUseCaseProtocol;

/// The failures of the init call and of the steps after it.
class AppInitDataErrorProtocol : public virtual CommonErrorProtocol {};

class AppInitDataErrorProtocolWithChaining : public virtual AppInitDataErrorProtocol,
                                             public virtual CommonErrorProtocolWithChaining {
public:
    virtual std::shared_ptr<AppInitDataErrorProtocol> nextAppInitDataErrorProtocolResponder() = 0;
    std::shared_ptr<CommonErrorProtocol> nextCommonErrorProtocolResponder() override {
        return nextAppInitDataErrorProtocolResponder();
    }
};

/// The host's observer of a first download. Failures are reported on the main queue.
///
/// If the init call fails, only the failure is reported: the run stops there without a completion, and the next run
/// starts over. If any other step fails, that step counts as done, and the run continues. It ends as incomplete if the
/// database did not store what a step received.
class InitProcessUseCaseDelegate : public AppInitDataErrorProtocol {
public:
    /// Called once per run when every step is done and the account is recorded as complete. Comes on the run's own
    /// queue, not on the main queue. The last percentage is reported afterwards on the main queue, even if the use case
    /// is released here.
    virtual void initProcessCompleted(InitProcessUseCaseProtocol& by) = 0;
    /// Called once per run, instead of the above, if the database did not store all of the content, for example because
    /// the disk is full. The account is not recorded as complete. The next run requests what is missing. Comes on the
    /// run's own queue like a completion.
    virtual void initProcessIncomplete(InitProcessUseCaseProtocol& by) { static_cast<void>(by); }
    /// Reports on the main queue how much of the whole download is done, in percent from 0 to 100. The value never
    /// decreases, also not from one run to the next. `isSucess` is false in the reports of a step that failed.
    virtual void progressDidUpdate(InitProcessUseCaseProtocol& by, double value, bool isSucess) {
        static_cast<void>(by), static_cast<void>(value), static_cast<void>(isSucess);
    }
};

/// The first download of an account.
class InitProcessUseCaseProtocol : public DelegateUseCase<InitProcessUseCaseDelegate> {
public:
    /// Starts the download and returns. Called once per object: another run needs a new object.
    virtual void startInitProcess() = 0;
};

}  // namespace tarvo
