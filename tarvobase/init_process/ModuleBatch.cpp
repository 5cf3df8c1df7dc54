#include "tarvobase/init_process/ModuleBatch.h"

#include <algorithm>

#include "platform/ProcessState.h"

namespace tarvo {

ModuleBatchConstant& ModuleBatchConstant::shared() {
    return platform::ProcessState::current().get<ModuleBatchConstant>();
}

// A setting of 0 or less would never start anything.
ModuleBatch::ModuleBatch() : parallelBatchCount_(std::max(1, ModuleBatchConstant::shared().parallelBatchCount.get())) {}

const std::vector<std::vector<Module>>& ModuleBatch::initiateBatch(const std::vector<Module>& modules,
                                                                   std::optional<int> moduleCountPerBatch) {
    auto wanted = moduleCountPerBatch.value_or(ModuleBatchConstant::shared().moduleCountPerBatch.get());
    auto count = static_cast<std::size_t>(std::max(1, wanted));
    batch_.clear();
    for (std::size_t from = 0; from < modules.size(); from += count) {
        auto end = std::min(from + count, modules.size());
        batch_.emplace_back(modules.begin() + static_cast<std::ptrdiff_t>(from),
                            modules.begin() + static_cast<std::ptrdiff_t>(end));
    }
    return batch_;
}

void ModuleBatch::start() {
    if (!batch_.empty()) return startNext();
    if (auto listener = delegate.lock()) listener->allBatchesCompleted();
}

void ModuleBatch::batchCompleted(const std::vector<Module>&) {
    bool isLast = false;
    {
        std::lock_guard lock(mutex_);
        ++completedBatchCount_;
        --currentParallelCount_;
        isLast = completedBatchCount_ == batch_.size();
    }
    if (!isLast) return startNext();
    if (auto listener = delegate.lock()) listener->allBatchesCompleted();
}

int ModuleBatch::completedBatchCount() const {
    std::lock_guard lock(mutex_);
    return static_cast<int>(completedBatchCount_);
}

std::optional<std::vector<Module>> ModuleBatch::takeNext() {
    std::lock_guard lock(mutex_);
    if (currentParallelCount_ >= parallelBatchCount_ || batchIndex_ == batch_.size()) return std::nullopt;
    ++currentParallelCount_;
    return batch_[batchIndex_++];
}

void ModuleBatch::startNext() {
    auto listener = delegate.lock();
    if (!listener) return;
    while (auto modules = takeNext()) listener->nextBatch(*modules);
}

}  // namespace tarvo
