#include "tarvobase/record_changes/internal/ChangeDrain.h"

#include <utility>

#include "platform/Clock.h"

namespace tarvo {

using platform::Clock;

ChangeDrain::ChangeDrain(std::shared_ptr<DrainedChanges> changes, std::optional<std::string> lockFile)
    : changes_(std::move(changes)) {
    if (lockFile) lock_.emplace(*std::move(lockFile));
}

ChangeDrain::~ChangeDrain() { timer_.cancel(); }

/// Later, since callers may stand in a transaction, which the drain's own would wait for.
void ChangeDrain::onQueue(std::function<void(ChangeDrain&)> work) {
    queue_->async([weak = platform::weakSelf(this), work = std::move(work)] {
        if (auto self = weak.lock()) work(*self);
    });
}

void ChangeDrain::start() {
    onQueue([](ChangeDrain& self) {
        self.isOn_ = true;
        self.endWait();
        self.changes_->refresh();
        self.pass();
    });
}

void ChangeDrain::stop(std::function<void()> stopped) {
    onQueue([stopped = std::move(stopped)](ChangeDrain& self) mutable {
        self.isOn_ = false;
        self.endWait();
        if (stopped) self.resting_.push_back(std::move(stopped));
        self.pass();
    });
}

void ChangeDrain::wake() {
    onQueue([](ChangeDrain& self) {
        self.changes_->refresh();
        self.endWait();
        self.pass();
    });
}

ChangeDrain::Status ChangeDrain::status() const {
    platform::MutexLock lock(mutex_);
    return published_;
}

void ChangeDrain::whenResting(std::function<void()> callback) {
    onQueue([callback = std::move(callback)](ChangeDrain& self) mutable {
        self.resting_.push_back(std::move(callback));
        self.pass();
    });
}

/// Sends what can go, and settles the state. Everything that may let a change go ends here.
void ChangeDrain::pass() {
    queue_->assertCurrent();
    if (isOn_ && !isWaiting_ && canBegin()) claimAndSend();
    rest();
    publish();
}

bool ChangeDrain::canBegin() {
    if (hasBegun_) return true;
    if (lock_ && !lock_->tryLock()) {
        waitFor(lockWait, true);
        return false;
    }
    // What another process has stored meanwhile is not known here.
    changes_->refresh();
    hasBegun_ = changes_->reclaim();
    if (!hasBegun_) backOff();
    return hasBegun_;
}

void ChangeDrain::claimAndSend() {
    while (inFlight_ < mostRequests && !isWaiting_) {
        auto next = changes_->claimNext();
        if (next.hasFailed) backOff();
        if (!next.transactionID) return;
        ++inFlight_;
        ++sendCount_;
        changes_->send(*next.transactionID, [weak = platform::weakSelf(this)](DrainedChanges::Settle settle) {
            auto self = weak.lock();
            if (!self) return;
            self->onQueue([settle = std::move(settle)](ChangeDrain& drain) { drain.answered(settle); });
        });
    }
}

void ChangeDrain::answered(const DrainedChanges::Settle& settle) {
    auto outcome = settle();
    --inFlight_;
    if (outcome == DrainedChanges::Outcome::settled)
        backOff_.reset();
    else if (isOn_)
        backOff();
    pass();
}

/// Requests that were on their way together count once.
void ChangeDrain::backOff() {
    if (isWaiting_) return;
    waitFor(backOff_.next(), false);
}

void ChangeDrain::waitFor(std::chrono::milliseconds duration, bool isLockedOut) {
    isWaiting_ = true;
    current_.isLockedOut = isLockedOut;
    current_.until = (Clock::now() + duration).time_since_epoch().count();
    timer_ = queue_->asyncAfter(duration, [weak = platform::weakSelf(this)] {
        auto self = weak.lock();
        if (!self || !self->isWaiting_) return;
        self->endWait();
        self->pass();
    });
}

void ChangeDrain::endWait() {
    timer_.cancel();
    isWaiting_ = false;
    current_.until.reset();
    current_.isLockedOut = false;
}

/// Frees the lock and calls those who wait for the end, unless a request is on its way.
void ChangeDrain::rest() {
    if (inFlight_ > 0) return;
    hasBegun_ = false;
    if (lock_) lock_->unlock();
    for (auto& callback : std::exchange(resting_, {})) callback();
}

void ChangeDrain::publish() {
    current_.state = inFlight_ > 0 ? State::sending : !isOn_ ? State::off : isWaiting_ ? State::waiting : State::idle;
    platform::MutexLock lock(mutex_);
    published_ = current_;
}

}  // namespace tarvo
