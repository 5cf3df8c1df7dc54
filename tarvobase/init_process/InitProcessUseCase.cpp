#include "tarvobase/init_process/InitProcessUseCase.h"

#include <algorithm>

#include "platform/Log.h"
#include "tarvobase/notification/BrenNotificationCenter.h"
#include "tarvobase/notification/InitialProcessComplete.h"

namespace tarvo {

InitProcessUseCase::InitProcessUseCase(Parts parts)
    : parts_(std::move(parts)), processPercent_(parts_.userDefaultsUtil.getProgressPercent()) {}

std::shared_ptr<InitProcessUseCase> InitProcessUseCase::make(Parts parts) {
    std::shared_ptr<InitProcessUseCase> useCase(new InitProcessUseCase(std::move(parts)));
    useCase->prepareSteps();
    useCase->reportProgress(true);
    return useCase;
}

void InitProcessUseCase::prepareSteps() {
    auto attach = [self = platform::weakSelf(this)](Downloadable& step) {
        step.delegate = self;
        step.errorResponder = self;
    };
    parts_.appInitDM->appInitdelegate = platform::weakSelf(this);
    attach(*parts_.currentUserDM);
    attach(*parts_.appInitDM);
    for (auto& step : parts_.downloadableList) {
        attach(*step);
        step->updateState();
    }
}

void InitProcessUseCase::startInitProcess() { parts_.currentUserDM->execute(); }

void InitProcessUseCase::didComplete(Downloadable& step, bool status) {
    synchronizingQueue_->async([weak = platform::weakSelf(this), weakStep = platform::weakSelf(&step), status] {
        auto self = weak.lock();
        auto step = weakStep.lock();
        if (self && step) self->continueDownloadableExecution(*step, status);
    });
}

void InitProcessUseCase::continueDownloadableExecution(Downloadable& step, bool status) {
    // A second completion of a step must not record the account twice.
    if (step.state == ProcessState::completed) return;
    switch (step.processName()) {
        case Process::currentUser:
            return parts_.appInitDM->execute();
        case Process::appInit:
            if (!status) return initialDownloadIncomplete();
            initiateList(status);
            break;
        case Process::metadata:
            if (parts_.scope.isCurrent()) hasLookupColumns_ = parts_.populateRelatedModulesDM->populateLookupColumn();
            break;
        default:
            break;
    }
    updateDownloadable(step, status);
}

void InitProcessUseCase::appInitDataFetchedAndSaved(AppInitDataManager&) { parts_.currentUserDM->storeParsedUser(); }

/// Counts every step before the first one starts, so that a step that completes at once finds its count.
void InitProcessUseCase::initiateList(bool status) {
    for (auto& step : parts_.downloadableList) {
        step->initiate();
        progressUpdate(*step, {.total = step->totalCallsCount(), .current = 0}, status);
    }
    progressUpdate(*parts_.appInitDM, {.total = 1, .current = 1}, status);
}

void InitProcessUseCase::updateDownloadable(Downloadable& step, bool status) {
    step.markCompleted();
    for (auto& other : parts_.downloadableList) other->updateDependency(step.processName());
    bool allCompleted = executeProcess(parts_.downloadableList);
    if (allCompleted) isWhole() ? initialDownloadCompleted() : initialDownloadIncomplete();
    // A finished step counts in full, also when it reported less.
    auto count = downloadableProcess_.find(step.processName());
    if (count != downloadableProcess_.end())
        progressUpdate(step, {.total = count->second.total, .current = count->second.total}, status);
    if (allCompleted) keepAliveUntilReported();
}

/// Returns whether everything that the steps received is stored.
bool InitProcessUseCase::isWhole() const {
    return parts_.scope.isCurrent() && hasLookupColumns_ && !parts_.currentUserDM->hasUnstoredContent() &&
           std::ranges::none_of(parts_.downloadableList, [](auto& step) { return step->hasUnstoredContent(); });
}

void InitProcessUseCase::initialDownloadIncomplete() {
    platform::log(platform::LogLevel::warning, "first download",
                  "the first download is incomplete: the database did not store all of it");
    // What an outdated run lacks says nothing about the account.
    if (parts_.scope.isCurrent()) {
        // The next run starts anyway, so it also requests what the server did not send.
        parts_.userDefaultsUtil.requestMissingAgain();
        parts_.initProcessDataManager->initProcessIncompleteForUser(parts_.scope.account);
    }
    if (auto listener = delegate.lock()) listener->initProcessIncomplete(*this);
}

void InitProcessUseCase::initialDownloadCompleted() {
    auto id = parts_.scope.account;
    parts_.initProcessDataManager->initProcessCompleteForUser(id);
    if (auto listener = delegate.lock()) listener->initProcessCompleted(*this);
    BrenNotificationCenter::shared().notify<InitialProcessComplete>(
        true, [id](InitialProcessComplete& observer) { observer.initialProcessComplete(id); });
}

/// A host releases a run that is complete while the last percentages are still queued on both queues.
void InitProcessUseCase::keepAliveUntilReported() {
    synchronizingQueue_->async([self = platform::strongSelf(this)]() mutable {
        CommonUtils::performAsyncInMain([self = std::move(self)] {});
    });
}

void InitProcessUseCase::progressDidUpdate(Downloadable& step, int current, int total) {
    progressUpdate(step, {.total = total, .current = current}, true);
}

void InitProcessUseCase::progressUpdate(const Downloadable& step, Count count, bool status) {
    synchronizingQueue_->async([weak = platform::weakSelf(this), process = step.processName(), count, status] {
        auto self = weak.lock();
        if (!self) return;
        self->calculateProgressPercent(process, count);
        self->reportProgress(status);
    });
}

void InitProcessUseCase::calculateProgressPercent(Process process, Count count) {
    downloadableProcess_[process] = count;
    double current = 0, total = 0;
    for (auto& [_, one] : downloadableProcess_) {
        current += one.current;
        total += one.total;
    }
    if (total > 0) processPercent_ = std::max(processPercent_, 100 * current / total);
    if (parts_.scope.isCurrent()) parts_.userDefaultsUtil.setProgressPercent(static_cast<int>(processPercent_));
}

void InitProcessUseCase::reportProgress(bool status) {
    notifyDelegate([this, value = processPercent_, status](InitProcessUseCaseDelegate& listener) {
        listener.progressDidUpdate(*this, value, status);
    });
}

}  // namespace tarvo
