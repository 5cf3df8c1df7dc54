#include "bridge/FirstDownload.h"

#include "platform/MainQueue.h"
#include "tarvobase/configuration/DatabaseConstants.h"
#include "tarvobase/configuration/UserDefaults.h"
#include "tarvobase/storage/InMemoryStorage.h"

namespace tarvo::bridge {

namespace {

std::shared_ptr<InitProcessUseCase> runOver(const std::shared_ptr<DatabaseAdapter>& database, InitSteps steps) {
    BaseAssemblerWithDatabaseUserDefaults adapters(database, std::make_shared<InMemoryStorage>(),
                                                   std::make_shared<DatabaseConstants>(),
                                                   BrenUserDefaults::ofCurrentAccount());
    return makeInitProcessUseCase(adapters, steps);
}

}  // namespace

/// Is the run's delegate in the host's place, and passes everything on.
class FirstDownload::RunDelegate final : public CommonErrorRelay, public InitProcessUseCaseDelegate {
public:
    explicit RunDelegate(std::weak_ptr<FirstDownload> download) : download_(std::move(download)) {}

    // On the run's queue, while everything else comes on the main queue.
    void initProcessCompleted(InitProcessUseCaseProtocol&) override {
        MainQueue::shared()->async([download = download_] {
            if (auto present = download.lock()) present->runCompleted();
        });
    }
    void initProcessIncomplete(InitProcessUseCaseProtocol&) override {
        MainQueue::shared()->async([download = download_] {
            if (auto present = download.lock()) present->runIncomplete();
        });
    }
    void progressDidUpdate(InitProcessUseCaseProtocol&, double value, bool isSucess) override {
        if (auto download = download_.lock()) download->progressed(value, isSucess);
    }

private:
    void relay(const CommonErrorNotice& notice) override {
        auto download = download_.lock();
        if (download && download->listeners_.delegate) notice.repeatOn(*download->listeners_.delegate);
    }
    const std::weak_ptr<FirstDownload> download_;
};

/// Stands between a step and its run, and passes on what the step reports.
class StepWatch final : public DownloadProgressible, public CommonErrorRelay {
public:
    using StepEvent = FirstDownload::StepEvent;
    using Listener = std::function<void(const FirstDownload::StepReport& report)>;
    StepWatch(Process step, const std::shared_ptr<InitProcessUseCase>& run, Listener listener)
        : step_(step), run_(run), listener_(std::move(listener)) {}

    void didComplete(Downloadable& step, bool status) override {
        report(status ? StepEvent::completed : step.hasUnstoredContent() ? StepEvent::notStored : StepEvent::failed);
        if (auto run = run_.lock()) run->didComplete(step, status);
    }
    void progressDidUpdate(Downloadable& step, int current, int total) override {
        report(StepEvent::progressed);
        if (auto run = run_.lock()) run->progressDidUpdate(step, current, total);
    }

private:
    void relay(const CommonErrorNotice& notice) override {
        // The run is notified first, so that a listener knows the reason before it learns of the end.
        if (auto run = run_.lock()) notice.repeatOn(*run);
        report(StepEvent::failed, notice.kind, notice.arguments.valueOf("cause").textOr(""));
    }
    void report(StepEvent event, std::optional<CommonError> why = std::nullopt, std::string cause = {}) {
        MainQueue::shared()->async(
            [listener = listener_, report = FirstDownload::StepReport{step_, event, why, std::move(cause)}] {
                listener(report);
            });
    }

    const Process step_;
    const std::weak_ptr<InitProcessUseCase> run_;
    const Listener listener_;
};

std::shared_ptr<FirstDownload> FirstDownload::start(const std::shared_ptr<DatabaseAdapter>& database, InitSteps steps,
                                                    Listeners listeners) {
    std::shared_ptr<FirstDownload> self(new FirstDownload(std::move(listeners)));
    auto run = runOver(database, steps);
    self->runDelegate_ = std::make_shared<RunDelegate>(self);
    run->delegate = self->runDelegate_;
    self->run_ = run;
    self->watch(*run->parts().currentUserDM, run);
    self->watch(*run->parts().appInitDM, run);
    for (auto& step : run->parts().downloadableList) self->watch(*step, run);
    run->startInitProcess();
    return self;
}

void FirstDownload::watch(Downloadable& step, const std::shared_ptr<InitProcessUseCase>& run) {
    auto watch = std::make_shared<StepWatch>(step.processName(), run,
                                             [weak = platform::weakSelf(this)](const StepReport& report) {
                                                 if (auto self = weak.lock()) self->stepReported(report);
                                             });
    step.delegate = watch;
    step.errorResponder = watch;
    watches_.push_back(std::move(watch));
}

void FirstDownload::runCompleted() {
    isCompleted_ = true;
    if (listeners_.delegate) listeners_.delegate->initProcessCompleted(*run_);
}

void FirstDownload::runIncomplete() {
    if (listeners_.delegate) listeners_.delegate->initProcessIncomplete(*run_);
    end(false);
}

void FirstDownload::progressed(double percent, bool isSucess) {
    if (listeners_.delegate) listeners_.delegate->progressDidUpdate(*run_, percent, isSucess);
    // The percentage of an earlier run may be 100 from the start: only a report after the completion is the last.
    if (isCompleted_ && percent >= 100.0) end(true);
}

void FirstDownload::stepReported(const StepReport& report) {
    if (listeners_.step) listeners_.step(report);
    if (report.step == Process::appInit && report.event == StepEvent::failed) end(false);
}

void FirstDownload::end(bool completed) {
    if (std::exchange(hasEnded_, true)) return;
    if (listeners_.ended) listeners_.ended(completed);
}

}  // namespace tarvo::bridge
