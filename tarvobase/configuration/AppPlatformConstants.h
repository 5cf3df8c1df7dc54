#pragma once

#include <optional>

#include "platform/Object.h"

namespace tarvo {

/// The limits of a platform. Each of them is nullopt if there is no limit.
class AppPlatformConstantsProtocol : public virtual platform::Object {
public:
    virtual std::optional<int> maximumNumberOfThreads() const = 0;
    virtual std::optional<int> maximumRowsPerOperation() const = 0;
    virtual std::optional<int> maxParallelSyncOperations() const = 0;
};

/// The limits of a desktop, which has none.
class OSXPlatformConstants final : public AppPlatformConstantsProtocol {
public:
    std::optional<int> maximumNumberOfThreads() const override { return std::nullopt; }
    std::optional<int> maximumRowsPerOperation() const override { return std::nullopt; }
    std::optional<int> maxParallelSyncOperations() const override { return std::nullopt; }
};

}  // namespace tarvo
