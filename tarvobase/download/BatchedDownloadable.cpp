#include "tarvobase/download/BatchedDownloadable.h"

#include "platform/Log.h"
#include "platform/Text.h"
#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/network_layer/NetworkFailure.h"

namespace tarvo {

void BatchedDownloadable::initiate() {
    auto batches = makeModuleBatch();
    batches->initiateBatch({});
    platform::MutexLock lock(mutex_);
    prepared_ = std::move(batches);
}

int BatchedDownloadable::totalCallsCount() const {
    platform::MutexLock lock(mutex_);
    auto& batches = prepared_ ? prepared_ : running_;
    return batches ? batches->batchCount() : 0;
}

void BatchedDownloadable::execute() {
    std::shared_ptr<ModuleBatch> batches;
    {
        platform::MutexLock lock(mutex_);
        batches = std::exchange(prepared_, nullptr);
    }
    run(batches ? std::move(batches) : makeModuleBatch());
}

void BatchedDownloadable::run(std::shared_ptr<ModuleBatch> batches, std::optional<Callbacks> callbacks) {
    batches->delegate = platform::weakSelf(this);
    {
        platform::MutexLock lock(mutex_);
        waiting_.push_back({std::move(batches), std::move(callbacks)});
        if (std::exchange(isRunning_, true)) return;
    }
    startNextRun();
}

void BatchedDownloadable::startNextRun() {
    auto self = platform::strongSelf(this);  // a callback at the end may release the step
    auto batches = takeNextRun();
    if (!batches) return;
    forgetUnstored();
    batches->start();
    reportProgress(*batches);
}

std::shared_ptr<ModuleBatch> BatchedDownloadable::takeNextRun() {
    Callbacks former;  // released after the lock, since it may run destructors of the host
    platform::MutexLock lock(mutex_);
    isRunning_ = !waiting_.empty();
    if (!isRunning_) return nullptr;
    auto next = std::move(waiting_.front());
    waiting_.pop_front();
    if (next.callbacks) former = std::exchange(callbacks_, *std::move(next.callbacks));
    running_ = std::move(next.batches);
    unstored_.clear();
    return running_;
}

std::shared_ptr<ModuleBatch> BatchedDownloadable::runningBatches() const {
    platform::MutexLock lock(mutex_);
    return running_;
}

std::set<std::string> BatchedDownloadable::unstoredModules() const {
    platform::MutexLock lock(mutex_);
    return unstored_;
}

void BatchedDownloadable::callBack() {
    Callback callback;
    {
        platform::MutexLock lock(mutex_);
        callback = hasUnstoredContent() ? callbacks_.failure : callbacks_.success;
    }
    if (callback) callback();
}

void BatchedDownloadable::endRun() {
    if (auto listener = delegate.lock()) listener->didComplete(*this, !hasUnstoredContent());
    startNextRun();
}

void BatchedDownloadable::reportProgress(const ModuleBatch& batches) {
    if (auto listener = delegate.lock())
        listener->progressDidUpdate(*this, batches.completedBatchCount(), batches.batchCount());
}

void BatchedDownloadable::nextBatch(const std::vector<Module>& modules) {
    logBatch(platform::LogLevel::progress, logTexts_.requested, modules);
    request(modules);
}

// The end of the last batch ends the run. Another run may be in progress afterwards, so the batches are taken first.
void BatchedDownloadable::endBatch(const std::vector<Module>& modules, const Failures& failures) {
    for (auto& name : failures.unstored) reportUnstored(name);
    {
        platform::MutexLock lock(mutex_);
        unstored_.insert(failures.unstored.begin(), failures.unstored.end());
    }
    auto batches = runningBatches();
    batches->batchCompleted(modules, failures);
    reportProgress(*batches);
}

void BatchedDownloadable::transportFailed(const std::vector<Module>& modules, const NetworkError& error) {
    platform::log(platform::LogLevel::warning, "first download",
                  "progress updated failure invoked: " + std::string(bren::kindName(error.kind)));
    logBatch(platform::LogLevel::warning, std::string(logTexts_.completed) + " - failure for ", modules);
    reportNetworkFailure(errorResponder, error, scope_);
}

void BatchedDownloadable::reportMissing(const std::set<std::string>& modules) const {
    if (modules.empty()) return;
    platform::log(platform::LogLevel::warning, "first download",
                  std::string(logTexts_.step) + " without usable content: " +
                      text::join(std::vector<std::string>(modules.begin(), modules.end()), ", "));
    if (auto responder = errorResponder.lock()) responder->parsingError();
}

void BatchedDownloadable::parsingFailed(const std::vector<Module>& modules, const ParserError& error) {
    platform::log(platform::LogLevel::warning, "first download",
                  "progress updated failure invoked: " + error.logText());
    logBatch(platform::LogLevel::warning, std::string(logTexts_.completed) + " - failure for ", modules);
    if (auto responder = errorResponder.lock()) responder->parsingError();
}

std::set<std::string> BatchedDownloadable::namesOf(const std::vector<Module>& modules) {
    std::set<std::string> names;
    for (auto& module : modules) names.insert(module.moduleName);
    return names;
}

BatchedDownloadable::Outcome BatchedDownloadable::commit(const std::string& name,
                                                         platform::FunctionRef<void()> store) const {
    auto& database = scope_.databaseAdapter;
    bool isCommitted = database && scope_.isCurrent() && database->tolerantTransaction(name, [&] {
        store();
        return true;
    });
    return isCommitted ? Outcome::stored : Outcome::failed;
}

void BatchedDownloadable::logBatch(platform::LogLevel level, std::string_view what,
                                   const std::vector<Module>& modules) const {
    std::vector<std::string> names;
    for (auto& module : modules) names.push_back(module.moduleName);
    platform::log(level, "first download", std::string(logTexts_.step).append(what).append(text::join(names, ", ")));
}

void BatchedDownloadable::logUnreadable(const std::string& moduleName, const ParserError& error) const {
    platform::log(platform::LogLevel::warning, "first download",
                  std::string(logTexts_.step) + " of " + moduleName + " could not be read: " + error.logText());
}

}  // namespace tarvo
