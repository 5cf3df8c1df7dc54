#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "tarvobase/configuration/Setting.h"
#include "tarvobase/value_objects/Module.h"

namespace tarvo {

/// How downloads that go by modules are cut. Larger batches make an answer that the server may cut off and that is lost
/// as a whole; more of them at once take the connection from what the user waits for.
struct ModuleBatchConstant {
    Setting<int> moduleCountPerBatch{4};
    Setting<int> parallelBatchCount{2};

    static ModuleBatchConstant& shared();
};

/// Does the work of a batch. Called on the thread that starts the batches or that completes one.
class ModuleBatchDelegate : public virtual platform::Object {
public:
    /// Starts the work and returns; `batchCompleted` is called when it is done, well or not.
    virtual void nextBatch(const std::vector<Module>& modules) = 0;
    /// Every batch is done. Once a run.
    virtual void allBatchesCompleted() = 0;
};

/// Cuts a list of modules into batches and keeps a bounded number of them under way. For one run; from any thread.
class ModuleBatch : public virtual platform::Object {
public:
    ModuleBatch();

    std::weak_ptr<ModuleBatchDelegate> delegate;

    /// Cuts the list, in its order, into pieces of at most `moduleCountPerBatch`.
    const std::vector<std::vector<Module>>& initiateBatch(const std::vector<Module>& modules,
                                                          std::optional<int> moduleCountPerBatch = std::nullopt);
    /// Starts the first batches. Without any, all are completed at once.
    void start();
    void batchCompleted(const std::vector<Module>& modules);

    int completedBatchCount() const;
    int batchCount() const { return static_cast<int>(batch_.size()); }

private:
    std::optional<std::vector<Module>> takeNext();
    void startNext();

    // Two batches may complete while the first ones are still being started.
    mutable std::mutex mutex_;
    std::vector<std::vector<Module>> batch_;
    std::size_t batchIndex_ = 0;
    std::size_t completedBatchCount_ = 0;
    int currentParallelCount_ = 0;
    const int parallelBatchCount_;
};

}  // namespace tarvo
