#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/Object.h"
#include "tarvobase/utils/ReadWriteBox.h"

namespace tarvo {

/// The delegate of a tracker.
class ConcurrentCallsCompletion : public virtual platform::Object {
public:
    virtual void allConcurrentCallsCompleted(const std::string& queueId) = 0;
};

/// Counts calls that run side by side and reports when the last one has ended. Any thread may use it. Counting down and
/// reading the count are two steps: if the last two calls race, both may see the end. So either the callback must be
/// safe to run twice, or the calls must end on one queue.
class ConcurrentCallsTracker {
public:
    static constexpr std::string_view defaultQueueId = "ConcurrentCallsTracker";

    /// Makes a tracker of this many calls. It holds the delegate weakly and the callback strongly.
    static std::shared_ptr<ConcurrentCallsTracker> tracker(std::int64_t totalCallsCount,
                                                           std::optional<std::string> queueId = std::nullopt,
                                                           std::weak_ptr<ConcurrentCallsCompletion> delegate = {},
                                                           std::function<void()> completionCallback = {});

    void increaseTotalCount();
    /// Counts one call down. Whenever the count is then 0 or less, calls first the delegate and then the callback, on
    /// the calling thread.
    void callCompleted();
    bool isAllCallsCompleted() const { return getTotalCount() <= 0; }
    /// Sets the count. Calls nobody, not even for 0.
    void set(std::int64_t totalCount);
    std::int64_t getTotalCount() const { return totalCallsCount_.value(); }

private:
    ConcurrentCallsTracker(std::int64_t totalCallsCount, std::string queueId,
                           std::weak_ptr<ConcurrentCallsCompletion> delegate, std::function<void()> completionCallback);

    const std::string queueId_;
    ReadWriteBox<std::int64_t> totalCallsCount_;
    const std::weak_ptr<ConcurrentCallsCompletion> completionDelegate_;
    const std::function<void()> completionCallback_;
};

}  // namespace tarvo
