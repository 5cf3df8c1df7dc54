#include "tarvobase/list_view/OnlineViews.h"

#include "platform/ProcessState.h"

namespace tarvo {

OnlineViews& OnlineViews::shared() { return platform::ProcessState::current().get<OnlineViews>(); }

bool OnlineViews::addRequest(const std::string& account, const CustomView& view) {
    if (view.isOfflineSupported) return false;
    platform::MutexLock lock(mutex_);
    return onlineCVList_.insert(keyOf(account, view)).second;
}

void OnlineViews::addAnswer(const std::string& account, const CustomView& view) {
    platform::MutexLock lock(mutex_);
    answered_.insert(keyOf(account, view));
}

bool OnlineViews::awaitsReplacement(const std::string& account, const CustomView& view) const {
    if (view.isOfflineSupported) return false;
    platform::MutexLock lock(mutex_);
    return !answered_.contains(keyOf(account, view));
}

}  // namespace tarvo
