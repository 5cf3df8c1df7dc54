#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/FunctionRef.h"
#include "platform/Log.h"
#include "platform/ThreadSafety.h"
#include "tarvobase/configuration/Scope.h"
#include "tarvobase/download/Downloadable.h"
#include "tarvobase/download/ModuleBatch.h"
#include "tarvobase/network_layer/NetworkAdapter.h"
#include "tarvobase/network_layer/ParserProtocol.h"
#include "tarvobase/usecase/ErrorProtocols.h"

namespace tarvo {

/// A step of the first download that works in batches of modules. A subclass requests a batch and stores the answer.
/// The rest happens here:
///
///     initiate -> the batches are determined
///     execute  -> the first requests go out
///     answer   -> stored or given up, the modules flagged, progress reported, the next request goes out
///     the last -> `allBatchesCompleted`, where the subclass ends the run: `didComplete`
///
/// A batch without a usable answer is logged, reported to `errorResponder` on the network queue, and counts as done:
/// a later sync brings the missing content. A module whose content the database did not store keeps its flag clear; the
/// run then ends with `didComplete(false)`, otherwise with true. A program that shuts down leaves its last batches
/// undone. A step runs one download at a time; further downloads wait. Held by `shared_ptr`; a step that is released
/// stores, flags and reports nothing more.
class BatchedDownloadable : public Downloadable, public ModuleBatchDelegate {
public:
    using Feature = ModuleBatchConstant::Feature;
    using Callback = std::function<void()>;
    using Failures = ModuleBatch::Failures;

    Process processName() const override { return ModuleBatchConstant::processOf(feature_); }
    void initiate() override;
    int totalCallsCount() const override;
    void execute() override;

    void nextBatch(const std::vector<Module>& modules) final;

    /// Returns the modules whose content the database did not store, in the last download. From any thread.
    std::set<std::string> unstoredModules() const;

protected:
    /// The texts of the step's progress lines: how each line begins, and how it continues.
    struct LogTexts {
        std::string_view step;
        std::string_view requested;
        std::string_view completed;
    };
    /// The step belongs to the scope. It stores and flags nothing after the scope is outdated.
    BatchedDownloadable(Feature feature, LogTexts logTexts, Scope scope)
        : feature_(feature), logTexts_(logTexts), scope_(std::move(scope)) {}

    const Scope& scope() const { return scope_; }
    /// What became of an entry: `rejected` content does not fit the tables, so no later run could store it either;
    /// `failed` content was refused by the database, for example because the disk is full.
    enum class Outcome { stored, rejected, failed };
    /// Stores content of the server through table classes, in one commit.
    Outcome commit(const std::string& name, platform::FunctionRef<void()> store) const;

    virtual std::shared_ptr<ModuleBatch> makeModuleBatch() const = 0;
    /// Sends the request of a batch. The answer goes to `batchAnswered`.
    virtual void request(const std::vector<Module>& modules) = 0;

    /// The callbacks of a download's end. `failure` is called if the database did not store all of the content.
    struct Callbacks {
        Callback success;
        Callback failure;
    };
    /// Runs the batches now, or after the downloads that were started before. Keeps the former callbacks if none are
    /// given.
    void run(std::shared_ptr<ModuleBatch> batches, std::optional<Callbacks> callbacks = std::nullopt);
    /// Returns the batches of the download in progress.
    std::shared_ptr<ModuleBatch> runningBatches() const;
    /// Calls the callback of the end.
    void callBack();
    void endRun();

    /// Handles the answer of a batch: `parse(body)`, then `store(value, info)` for each entry that can be read, then
    /// the end of the batch. `store` returns an `Outcome`. Body and answer are released before the next request goes
    /// out.
    template <class Parse, class Store>
    void batchAnswered(const std::vector<Module>& modules, NetworkAnswer answer, Parse parse, Store store) {
        if (answer.error && answer.error->kind == NetworkError::Kind::shutDown) return;
        Failures failures{.unstored = {}, .missing = namesOf(modules)};
        if (!scope_.isCurrent())
            std::swap(failures.unstored, failures.missing);
        else if (answer.error)
            transportFailed(modules, *answer.error);
        else if (auto parsed = parse(std::exchange(answer.body, {}))) {
            storeEntries(modules, (*std::move(parsed)).result, store, failures);
            reportMissing(failures.missing);
        } else
            parsingFailed(modules, parsed.error());
        endBatch(modules, failures);
    }

private:
    struct Run {
        std::shared_ptr<ModuleBatch> batches;
        std::optional<Callbacks> callbacks;
    };
    void startNextRun();
    std::shared_ptr<ModuleBatch> takeNextRun();
    void reportProgress(const ModuleBatch& batches);
    void endBatch(const std::vector<Module>& modules, const Failures& failures);
    void transportFailed(const std::vector<Module>& modules, const NetworkError& error);
    void reportMissing(const std::set<std::string>& modules) const;
    void parsingFailed(const std::vector<Module>& modules, const ParserError& error);
    void logBatch(platform::LogLevel level, std::string_view what, const std::vector<Module>& modules) const;
    void logUnreadable(const std::string& moduleName, const ParserError& error) const;

    /// Takes each module that gets its content out of `missing`.
    template <class T, class Info, class Store>
    void storeEntries(const std::vector<Module>& modules,
                      std::vector<Result<RParsedResult<T, Info>, ParserError>> entries, Store& store,
                      Failures& failures) {
        const auto asked = namesOf(modules);
        logBatch(platform::LogLevel::progress, std::string(logTexts_.completed) + " - success for ", modules);
        for (auto& entry : entries) {
            if (!entry) {
                logUnreadable("a module", entry.error());
                continue;
            }
            auto name = nameIn(entry->info.moduleName);
            if (!entry->data) {
                logUnreadable(name, entry->data.error());
                continue;
            }
            auto outcome = store(*entry->data, entry->info);
            // What nobody asked for is stored if it can be.
            if (outcome == Outcome::failed && asked.contains(name)) failures.unstored.insert(name);
            if (outcome != Outcome::rejected) failures.missing.erase(name);
        }
    }
    static std::set<std::string> namesOf(const std::vector<Module>& modules);
    static std::string nameIn(const std::optional<std::string>& moduleName) { return moduleName.value_or("a module"); }

    const Feature feature_;
    const LogTexts logTexts_;
    const Scope scope_;

    mutable platform::Mutex mutex_;
    std::shared_ptr<ModuleBatch> prepared_ TARVO_GUARDED_BY(mutex_);  ///< by `initiate`, for `execute`
    std::deque<Run> waiting_ TARVO_GUARDED_BY(mutex_);
    bool isRunning_ TARVO_GUARDED_BY(mutex_) = false;
    std::shared_ptr<ModuleBatch> running_ TARVO_GUARDED_BY(mutex_);
    Callbacks callbacks_ TARVO_GUARDED_BY(mutex_);
    std::set<std::string> unstored_ TARVO_GUARDED_BY(mutex_);
};

}  // namespace tarvo
