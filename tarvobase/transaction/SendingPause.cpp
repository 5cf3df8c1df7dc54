#include "tarvobase/transaction/SendingPause.h"

#include <utility>

#include "platform/Clock.h"
#include "tarvobase/transaction/SendingLock.h"

namespace tarvo {

void SendingPause::waitForServer(Ended ended, bool isSignedOut) {
    platform::MutexLock lock(mutex_);
    if (until_) return;
    isSignedOut_ = isSignedOut;
    begin(backOff_.next(), std::move(ended));
}

void SendingPause::serverHasAnswered() {
    platform::MutexLock lock(mutex_);
    backOff_.reset();
}

void SendingPause::waitForOtherProcess(Ended ended) {
    platform::MutexLock lock(mutex_);
    if (until_) return;
    isForOtherProcess_ = true;
    begin(SendingLock::retryWait, std::move(ended));
}

void SendingPause::begin(std::chrono::milliseconds duration, Ended ended) {
    until_ = (platform::Clock::now() + duration).time_since_epoch().count();
    timer_ = queue_->asyncAfter(duration, std::move(ended));
}

void SendingPause::end() {
    platform::MutexLock lock(mutex_);
    until_.reset();
    isForOtherProcess_ = false;
    timer_.cancel();
}

std::optional<std::int64_t> SendingPause::until() const {
    platform::MutexLock lock(mutex_);
    return until_;
}

std::optional<std::int64_t> SendingPause::since() const {
    platform::MutexLock lock(mutex_);
    return backOff_.since();
}

bool SendingPause::isSignedOut() const {
    platform::MutexLock lock(mutex_);
    return isSignedOut_;
}

bool SendingPause::isForOtherProcess() const {
    platform::MutexLock lock(mutex_);
    return isForOtherProcess_;
}

}  // namespace tarvo
