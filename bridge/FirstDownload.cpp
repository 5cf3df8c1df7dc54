#include "bridge/FirstDownload.h"

#include "platform/MainQueue.h"
#include "tarvobase/configuration/DatabaseConstants.h"
#include "tarvobase/configuration/UserDefaults.h"
#include "tarvobase/storage/InMemoryStorage.h"

namespace tarvo::bridge {

namespace {

using StepEvent = FirstDownload::StepEvent;

class RunRecorder final : public CommonErrorRecorder, public InitProcessUseCaseDelegate {
public:
    // On the run's queue, while everything else comes on the main queue.
    void initProcessCompleted(InitProcessUseCaseProtocol&) override {
        MainQueue::shared()->async([weak = platform::weakSelf(this)] {
            if (auto self = weak.lock()) self->told("initProcessCompleted");
        });
    }
    void progressDidUpdate(InitProcessUseCaseProtocol&, double value, bool isSucess) override {
        told("progressDidUpdate", {{"value", value}, {"isSucess", isSucess}});
    }
};

std::shared_ptr<InitProcessUseCase> runOver(const std::shared_ptr<DatabaseAdapter>& database, InitSteps steps) {
    BaseAssemblerWithDatabaseUserDefaults adapters(database, std::make_shared<InMemoryStorage>(),
                                                   std::make_shared<DatabaseConstants>(),
                                                   std::make_shared<BrenUserDefaults>());
    return makeInitProcessUseCase(adapters, steps);
}

}  // namespace

/// Stands between a step and its run, and passes on what the step reports.
class StepWatch final : public DownloadProgressible, public CommonErrorProtocol {
public:
    using Listener = std::function<void(Process step, StepEvent event, const std::string& why)>;
    StepWatch(Process step, const std::shared_ptr<InitProcessUseCase>& run, Listener listener)
        : step_(step), run_(run), listener_(std::move(listener)) {}

    void didComplete(Downloadable& step, bool status) override {
        tell(status ? StepEvent::completed : StepEvent::failed);
        if (auto run = run_.lock()) run->didComplete(step, status);
    }
    void progressDidUpdate(Downloadable& step, int current, int total) override {
        tell(StepEvent::progressed);
        if (auto run = run_.lock()) run->progressDidUpdate(step, current, total);
    }

    void parsingError() override { failed("parsingError", &CommonErrorProtocol::parsingError); }
    void networkResponseError() override { failed("networkResponseError", &CommonErrorProtocol::networkResponseError); }
    void networkParamsError() override { failed("networkParamsError", &CommonErrorProtocol::networkParamsError); }
    void networkIdentifierError() override {
        failed("networkIdentifierError", &CommonErrorProtocol::networkIdentifierError);
    }
    void noAuthtoken(const std::string& brenuid) override {
        failed("noAuthtoken", &CommonErrorProtocol::noAuthtoken, brenuid);
    }
    void unableToGetMetadata(const std::string& moduleName, const std::string& crmColumnName) override {
        failed("unableToGetMetadata", &CommonErrorProtocol::unableToGetMetadata, moduleName, crmColumnName);
    }

private:
    template <class Notice, class... Arguments>
    void failed(const char* why, Notice notice, const Arguments&... arguments) {
        // The run's own notice comes first, so that a listener who hears of the end has heard of the reason.
        if (auto run = run_.lock()) std::invoke(notice, static_cast<CommonErrorProtocol&>(*run), arguments...);
        tell(StepEvent::failed, why);
    }
    void tell(StepEvent event, std::string why = {}) {
        MainQueue::shared()->async(
            [listener = listener_, step = step_, event, why = std::move(why)] { listener(step, event, why); });
    }

    const Process step_;
    const std::weak_ptr<InitProcessUseCase> run_;
    const Listener listener_;
};

std::shared_ptr<FirstDownload> FirstDownload::start(const std::shared_ptr<DatabaseAdapter>& database, InitSteps steps,
                                                    Listeners listeners) {
    std::shared_ptr<FirstDownload> self(new FirstDownload(std::move(listeners)));
    auto recorder = std::make_shared<RunRecorder>();
    recorder->listener = [weak = std::weak_ptr(self)](std::string_view name, ValueMap arguments) {
        if (auto self = weak.lock()) self->noticeTold(name, std::move(arguments));
    };
    auto run = runOver(database, steps);
    run->delegate = recorder;
    self->recorder_ = recorder;
    self->run_ = run;
    self->watch(*run->parts().currentUserDM, run);
    self->watch(*run->parts().appInitDM, run);
    for (auto& step : run->parts().downloadableList) self->watch(*step, run);
    run->startInitProcess();
    return self;
}

void FirstDownload::watch(Downloadable& step, const std::shared_ptr<InitProcessUseCase>& run) {
    auto watch = std::make_shared<StepWatch>(
        step.processName(), run,
        [weak = platform::weakSelf(this)](Process step, StepEvent event, const std::string& why) {
            if (auto self = weak.lock()) self->stepTold(step, event, why);
        });
    step.delegate = watch;
    step.errorResponder = watch;
    watches_.push_back(std::move(watch));
}

void FirstDownload::noticeTold(std::string_view name, ValueMap arguments) {
    bool isWhole = name == "progressDidUpdate" && arguments.valueOf("value").toReal() >= 100.0;
    isCompleted_ |= name == "initProcessCompleted";
    if (listeners_.notice) listeners_.notice(name, std::move(arguments));
    // The percentage of an earlier run may be whole from the start: the last report is the first behind the completion.
    if (isCompleted_ && isWhole) end(true);
}

void FirstDownload::stepTold(Process step, StepEvent event, const std::string& why) {
    if (listeners_.step) listeners_.step(step, event, why);
    if (step == Process::appInit && event == StepEvent::failed) end(false);
}

void FirstDownload::end(bool completed) {
    if (std::exchange(hasEnded_, true)) return;
    if (listeners_.ended) listeners_.ended(completed);
}

}  // namespace tarvo::bridge
