#pragma once

#include <memory>

#include "tarvobase/usecase/DelegateUseCase.h"
#include "tarvobase/usecase/ErrorProtocols.h"

namespace tarvo {

class InitProcessUseCaseProtocol;

/// Failures of the init call and of the steps behind it.
class AppInitDataErrorProtocol : public virtual CommonErrorProtocol {};

class AppInitDataErrorProtocolWithChaining : public virtual AppInitDataErrorProtocol,
                                             public virtual CommonErrorProtocolWithChaining {
public:
    virtual std::shared_ptr<AppInitDataErrorProtocol> nextAppInitDataErrorProtocolResponder() = 0;
    std::shared_ptr<CommonErrorProtocol> nextCommonErrorProtocolResponder() override {
        return nextAppInitDataErrorProtocolResponder();
    }
};

/// What the host hears of a first download. Failures come on the main queue.
///
/// When the init call fails there is no completion, and the failure is all that comes: the run stays where it is, and
/// the next one starts over. A failure of any other step leaves that step for done, and the run goes on.
class InitProcessUseCaseDelegate : public AppInitDataErrorProtocol {
public:
    /// Every step is done and the account is noted as complete. Once a run, on the run's own queue and not on the main
    /// one; the report of the last percentage follows on the main queue, also when the use case is let go here.
    virtual void initProcessCompleted(InitProcessUseCaseProtocol& by) = 0;
    /// How much of the whole download is done, in percent from 0 to 100, on the main queue. It never goes down, also
    /// not from one run to the next. `isSucess` is false in the reports of a step that failed.
    virtual void progressDidUpdate(InitProcessUseCaseProtocol& by, double value, bool isSucess) {
        static_cast<void>(by), static_cast<void>(value), static_cast<void>(isSucess);
    }
};

/// The first download of an account.
class InitProcessUseCaseProtocol : public DelegateUseCase<InitProcessUseCaseDelegate> {
public:
    /// Starts the download and returns. Once an object: another run takes a new object.
    virtual void startInitProcess() = 0;
};

}  // namespace tarvo
