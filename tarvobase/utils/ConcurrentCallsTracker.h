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

/// Hears that all calls of a tracker have ended.
class ConcurrentCallsCompletion : public virtual platform::Object {
public:
    virtual void allConcurrentCallsCompleted(const std::string& queueId) = 0;
};

/// Counts calls that run side by side and tells when the last has ended. Any thread may use it. Counting down and
/// looking at the count are two steps: when the last two calls race, both may see the end, so the step at the end
/// must be safe to run twice, or the calls must end on one queue.
class ConcurrentCallsTracker {
public:
    static constexpr std::string_view defaultQueueId = "ConcurrentCallsTracker";

    /// A tracker of so many calls. The delegate is held weakly, the callback strongly.
    static std::shared_ptr<ConcurrentCallsTracker> tracker(std::int64_t totalCallsCount,
                                                           std::optional<std::string> queueId = std::nullopt,
                                                           std::weak_ptr<ConcurrentCallsCompletion> delegate = {},
                                                           std::function<void()> completionCallback = {});

    void increaseTotalCount();
    /// One call less. At 0 and below, every time, tells first the delegate, then the callback, on the calling thread.
    void callCompleted();
    bool isAllCallsCompleted() const { return getTotalCount() <= 0; }
    /// Starts over with another count; tells nobody, also at 0.
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
