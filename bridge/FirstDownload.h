#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "bridge/Recorder.h"
#include "tarvobase/init_process/InitProcessAssembler.h"

namespace tarvo::bridge {

class StepWatch;

/// A first download under watch. A run tells its delegate how far it is, but not which step is at work, which one
/// failed, or that it stays where it is since the init call brought nothing usable; here all of that is told. Main
/// queue; letting go of the object ends the run.
class FirstDownload final : public platform::Object {
public:
    enum class StepEvent { progressed, completed, failed };
    /// Who hears of it, on the main queue. Each may be absent.
    struct Listeners {
        /// Every operation of the run's delegate, by name.
        Recorder::Listener notice;
        /// What a step reported; `why` is the notice of a failure, empty for a step that failed without one.
        std::function<void(Process step, StepEvent event, const std::string& why)> step;
        /// Once, behind the last percentage. False when the run stays.
        std::function<void(bool completed)> ended;
    };

    /// Starts a run for the current account, whose open database it is.
    static std::shared_ptr<FirstDownload> start(const std::shared_ptr<DatabaseAdapter>& database, InitSteps steps,
                                                Listeners listeners);

private:
    explicit FirstDownload(Listeners listeners) : listeners_(std::move(listeners)) {}
    void watch(Downloadable& step, const std::shared_ptr<InitProcessUseCase>& run);
    void noticeTold(std::string_view name, ValueMap arguments);
    void stepTold(Process step, StepEvent event, const std::string& why);
    void end(bool completed);

    const Listeners listeners_;
    std::shared_ptr<platform::Object> recorder_;
    std::vector<std::shared_ptr<StepWatch>> watches_;
    std::shared_ptr<InitProcessUseCase> run_;
    bool isCompleted_ = false, hasEnded_ = false;
};

}  // namespace tarvo::bridge
