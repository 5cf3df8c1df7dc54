#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/Log.h"
#include "tarvobase/download/Downloadable.h"
#include "tarvobase/download/ModuleBatch.h"
#include "tarvobase/network_layer/NetworkAdapter.h"
#include "tarvobase/network_layer/ParserProtocol.h"
#include "tarvobase/usecase/ErrorProtocols.h"

namespace tarvo {

/// A step of the first download that goes by batches of modules. A subclass asks for a batch and stores what comes; the
/// rest is here:
///
///     initiate -> the batches are worked out
///     execute  -> the first requests go out
///     answer   -> stored or given up, the modules flagged, progress told, the next request goes out
///     the last -> `allBatchesCompleted`, where the subclass ends the run: the delegate hears `didComplete`, with true
///
/// A batch that gets no answer, or none that can be used, is logged, `errorResponder` hears of it on the network queue,
/// and it counts as done all the same: what it lacks comes with a later sync. Only a program that shuts down leaves its
/// last batches undone. A step runs one download at a time; what is asked for meanwhile waits. Held by `shared_ptr`;
/// when it is let go nothing more is stored, flagged or told.
class BatchedDownloadable : public Downloadable, public ModuleBatchDelegate {
public:
    using Feature = ModuleBatchConstant::Feature;
    using Callback = std::function<void()>;

    Process processName() const override { return ModuleBatchConstant::processOf(feature_); }
    void initiate() override;
    int totalCallsCount() const override;
    void execute() override;

    void nextBatch(const std::vector<Module>& modules) final;

protected:
    /// What the progress lines of a step begin with and how they go on.
    struct Words {
        std::string_view step;
        std::string_view requested;
        std::string_view completed;
    };
    BatchedDownloadable(Feature feature, Words words) : feature_(feature), words_(words) {}

    virtual std::shared_ptr<ModuleBatch> makeModuleBatch() const = 0;
    /// Sends the request of a batch, whose answer goes to `batchAnswered`.
    virtual void request(const std::vector<Module>& modules) = 0;

    /// What the end of a download calls. The failure is kept and never called, as no failure ends a download.
    struct Callbacks {
        Callback success;
        Callback failure;
    };
    /// Runs the batches now, or once the downloads before are done. Absent callbacks leave the former ones.
    void run(std::shared_ptr<ModuleBatch> batches, std::optional<Callbacks> callbacks = std::nullopt);
    /// The batches of the download under way.
    std::shared_ptr<ModuleBatch> runningBatches() const;
    void callSuccess();
    void endRun();

    /// What came of a batch: `parse(body)`, then `store(value, info)` for each entry that can be read, then the end of
    /// the batch. Body and answer are let go before the next request goes out.
    template <class Parse, class Store>
    void batchAnswered(const std::vector<Module>& modules, NetworkAnswer answer, Parse parse, Store store) {
        if (answer.error && answer.error->kind == NetworkError::Kind::shutDown) return;
        if (answer.error)
            transportFailed(modules, *answer.error);
        else if (auto parsed = parse(std::exchange(answer.body, {})))
            storeEntries(modules, (*std::move(parsed)).result, store);
        else
            parsingFailed(modules, parsed.error());
        endBatch(modules);
    }

private:
    struct Run {
        std::shared_ptr<ModuleBatch> batches;
        std::optional<Callbacks> callbacks;
    };
    void startNextRun();
    std::shared_ptr<ModuleBatch> takeNextRun();
    void reportProgress(const ModuleBatch& batches);
    void endBatch(const std::vector<Module>& modules);
    void transportFailed(const std::vector<Module>& modules, const NetworkError& error);
    void parsingFailed(const std::vector<Module>& modules, const ParserError& error);
    void logBatch(std::string_view what, const std::vector<Module>& modules) const;
    void logUnreadable(const std::string& moduleName, const ParserError& error) const;

    template <class T, class Info, class Store>
    void storeEntries(const std::vector<Module>& modules,
                      std::vector<Result<RParsedResult<T, Info>, ParserError>> entries, Store& store) {
        logBatch(std::string(words_.completed) + " - success for ", modules);
        for (auto& entry : entries) {
            if (!entry)
                logUnreadable("a module", entry.error());
            else if (!entry->data)
                logUnreadable(nameIn(entry->info.moduleName), entry->data.error());
            else
                store(*entry->data, entry->info);
        }
    }
    static std::string nameIn(const std::optional<std::string>& moduleName) { return moduleName.value_or("a module"); }

    const Feature feature_;
    const Words words_;

    mutable std::mutex mutex_;
    std::shared_ptr<ModuleBatch> prepared_;  ///< by `initiate`, for `execute`
    std::deque<Run> waiting_;
    bool isRunning_ = false;
    std::shared_ptr<ModuleBatch> running_;
    Callbacks callbacks_;
};

}  // namespace tarvo
