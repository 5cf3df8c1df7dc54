#include "tarvobase/download/BatchedDownloadable.h"

#include "platform/Text.h"
#include "tarvobase/network_layer/NetworkFailure.h"

namespace tarvo {

void BatchedDownloadable::initiate() {
    auto batches = makeModuleBatch();
    batches->initiateBatch({});
    std::lock_guard lock(mutex_);
    prepared_ = std::move(batches);
}

int BatchedDownloadable::totalCallsCount() const {
    std::lock_guard lock(mutex_);
    auto& batches = prepared_ ? prepared_ : running_;
    return batches ? batches->batchCount() : 0;
}

void BatchedDownloadable::execute() {
    std::shared_ptr<ModuleBatch> batches;
    {
        std::lock_guard lock(mutex_);
        batches = std::exchange(prepared_, nullptr);
    }
    run(batches ? std::move(batches) : makeModuleBatch());
}

void BatchedDownloadable::run(std::shared_ptr<ModuleBatch> batches, std::optional<Callbacks> callbacks) {
    batches->delegate = platform::weakSelf(this);
    {
        std::lock_guard lock(mutex_);
        waiting_.push_back({std::move(batches), std::move(callbacks)});
        if (std::exchange(isRunning_, true)) return;
    }
    startNextRun();
}

void BatchedDownloadable::startNextRun() {
    auto self = platform::strongSelf(this);  // who hears of the end may let go of the step
    auto batches = takeNextRun();
    if (!batches) return;
    batches->start();
    reportProgress(*batches);
}

std::shared_ptr<ModuleBatch> BatchedDownloadable::takeNextRun() {
    Callbacks former;  // ends after the lock, as the host's destructors do
    std::lock_guard lock(mutex_);
    isRunning_ = !waiting_.empty();
    if (!isRunning_) return nullptr;
    auto next = std::move(waiting_.front());
    waiting_.pop_front();
    if (next.callbacks) former = std::exchange(callbacks_, *std::move(next.callbacks));
    running_ = std::move(next.batches);
    return running_;
}

std::shared_ptr<ModuleBatch> BatchedDownloadable::runningBatches() const {
    std::lock_guard lock(mutex_);
    return running_;
}

void BatchedDownloadable::callSuccess() {
    Callback success;
    {
        std::lock_guard lock(mutex_);
        success = callbacks_.success;
    }
    if (success) success();
}

void BatchedDownloadable::endRun() {
    if (auto listener = delegate.lock()) listener->didComplete(*this, true);
    startNextRun();
}

void BatchedDownloadable::reportProgress(const ModuleBatch& batches) {
    if (auto listener = delegate.lock())
        listener->progressDidUpdate(*this, batches.completedBatchCount(), batches.batchCount());
}

void BatchedDownloadable::nextBatch(const std::vector<Module>& modules) {
    logBatch(words_.requested, modules);
    request(modules);
}

// The end of the last batch is the end of the run, after which another one may be running.
void BatchedDownloadable::endBatch(const std::vector<Module>& modules) {
    auto batches = runningBatches();
    batches->batchCompleted(modules);
    reportProgress(*batches);
}

void BatchedDownloadable::transportFailed(const std::vector<Module>& modules, const NetworkError& error) {
    platform::log(platform::LogLevel::warning, "first download",
                  "progress updated failure invoked: " + std::string(bren::kindName(error.kind)));
    logBatch(std::string(words_.completed) + " - failure for ", modules);
    tellFailure(errorResponder, error);
}

void BatchedDownloadable::parsingFailed(const std::vector<Module>& modules, const ParserError& error) {
    platform::log(platform::LogLevel::warning, "first download",
                  "progress updated failure invoked: " + error.logText());
    logBatch(std::string(words_.completed) + " - failure for ", modules);
    if (auto responder = errorResponder.lock()) responder->parsingError();
}

void BatchedDownloadable::logBatch(std::string_view what, const std::vector<Module>& modules) const {
    std::vector<std::string> names;
    for (auto& module : modules) names.push_back(module.moduleName);
    platform::log(platform::LogLevel::warning, "first download",
                  std::string(words_.step).append(what).append(text::join(names, ", ")));
}

void BatchedDownloadable::logUnreadable(const std::string& moduleName, const ParserError& error) const {
    platform::log(platform::LogLevel::warning, "first download",
                  std::string(words_.step) + " of " + moduleName + " could not be read: " + error.logText());
}

}  // namespace tarvo
