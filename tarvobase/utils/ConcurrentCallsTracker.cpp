#include "tarvobase/utils/ConcurrentCallsTracker.h"

#include <utility>

namespace tarvo {

std::shared_ptr<ConcurrentCallsTracker> ConcurrentCallsTracker::tracker(
    std::int64_t totalCallsCount, std::optional<std::string> queueId, std::weak_ptr<ConcurrentCallsCompletion> delegate,
    std::function<void()> completionCallback) {
    return std::shared_ptr<ConcurrentCallsTracker>(
        new ConcurrentCallsTracker(totalCallsCount, std::move(queueId).value_or(std::string(defaultQueueId)),
                                   std::move(delegate), std::move(completionCallback)));
}

ConcurrentCallsTracker::ConcurrentCallsTracker(std::int64_t totalCallsCount, std::string queueId,
                                               std::weak_ptr<ConcurrentCallsCompletion> delegate,
                                               std::function<void()> completionCallback)
    : queueId_(std::move(queueId)),
      totalCallsCount_(totalCallsCount),
      completionDelegate_(std::move(delegate)),
      completionCallback_(std::move(completionCallback)) {}

void ConcurrentCallsTracker::increaseTotalCount() {
    totalCallsCount_.write([](std::int64_t& count) { ++count; });
}

void ConcurrentCallsTracker::callCompleted() {
    totalCallsCount_.write([](std::int64_t& count) { --count; });
    if (!isAllCallsCompleted()) return;
    if (auto delegate = completionDelegate_.lock()) delegate->allConcurrentCallsCompleted(queueId_);
    if (completionCallback_) completionCallback_();
}

void ConcurrentCallsTracker::set(std::int64_t totalCount) { totalCallsCount_.setValue(totalCount); }

}  // namespace tarvo
