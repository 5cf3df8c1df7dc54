#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "tarvobase/init_process/InitProcessAssembler.h"

namespace tarvo::bridge {

class StepWatch;

/// A first download under watch. A run tells its delegate how far it is, but not which step is at work, which one
/// failed, or that it stays where it is since the init call brought nothing usable; here all of that is told. Main
/// queue; letting go of the object ends the run.
class FirstDownload final : public platform::Object {
public:
    enum class StepEvent { progressed, completed, failed };
    /// What a step reported. `why` is the notice of a failure, absent for a step that failed without one.
    struct StepReport {
        Process step;
        StepEvent event;
        std::optional<CommonError> why{};
    };
    /// What is called on the main queue. Each may be absent.
    struct Listeners {
        /// The delegate of the run. All its operations come on the main queue, also `initProcessCompleted`.
        std::shared_ptr<InitProcessUseCaseDelegate> delegate;
        std::function<void(const StepReport& report)> step;
        /// Called once, after the last percentage, with false when the run stays.
        std::function<void(bool completed)> ended;
    };

    /// Starts a run for the current account, whose open database it is.
    static std::shared_ptr<FirstDownload> start(const std::shared_ptr<DatabaseAdapter>& database, InitSteps steps,
                                                Listeners listeners);

private:
    explicit FirstDownload(Listeners listeners) : listeners_(std::move(listeners)) {}
    void watch(Downloadable& step, const std::shared_ptr<InitProcessUseCase>& run);
    void runCompleted();
    void progressed(double percent, bool isSucess);
    void stepReported(const StepReport& report);
    void end(bool completed);

    class RunDelegate;

    const Listeners listeners_;
    std::shared_ptr<RunDelegate> runDelegate_;
    std::vector<std::shared_ptr<StepWatch>> watches_;
    std::shared_ptr<InitProcessUseCase> run_;
    bool isCompleted_ = false, hasEnded_ = false;
};

}  // namespace tarvo::bridge
