#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "tarvobase/init_process/InitProcessAssembler.h"

namespace tarvo::bridge {

class StepWatch;

/// A first download that is watched step by step. A run reports its percentage to its delegate, but not which step is
/// at work, which one failed, or that it stopped because the init call brought nothing usable; this class reports all
/// of that. Main queue; releasing the object ends the run.
class FirstDownload final : public platform::Object {
public:
    /// `notStored` is the end of a step whose content the database did not store.
    enum class StepEvent { progressed, completed, failed, notStored };
    /// A report of a step. `why` is the notice of a failure, absent for a step that failed without one; `cause` says in
    /// words why a request got no answer and is empty otherwise.
    struct StepReport {
        Process step;
        StepEvent event;
        std::optional<CommonError> why{};
        std::string cause{};
    };
    /// Callbacks on the main queue. Each may be absent.
    struct Listeners {
        /// The delegate of the run. All its operations are called on the main queue, `initProcessCompleted` included.
        std::shared_ptr<InitProcessUseCaseDelegate> delegate;
        std::function<void(const StepReport& report)> step;
        /// Called once: with true after the last percentage, with false if the run stopped at the init call or is
        /// incomplete, since the database did not store all of it.
        std::function<void(bool completed)> ended;
    };

    /// Starts a run for the current account, whose open database is passed in.
    static std::shared_ptr<FirstDownload> start(const std::shared_ptr<DatabaseAdapter>& database, InitSteps steps,
                                                Listeners listeners);

private:
    explicit FirstDownload(Listeners listeners) : listeners_(std::move(listeners)) {}
    void watch(Downloadable& step, const std::shared_ptr<InitProcessUseCase>& run);
    void runCompleted();
    void runIncomplete();
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
