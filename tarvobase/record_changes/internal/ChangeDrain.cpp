#include "tarvobase/record_changes/internal/ChangeDrain.h"

#include <utility>

#include "platform/Clock.h"

namespace tarvo {

using platform::Clock;

ChangeDrain::ChangeDrain(std::shared_ptr<DrainedChanges> changes, std::shared_ptr<SendingLock> lock)
    : changes_(std::move(changes)), lock_(std::move(lock)) {}

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
    if (isOn_ && !isWaiting_ && canBegin()) claim();
    if (!isOn_ || isWaiting_) closeLine();
    rest();
    publish();
}

bool ChangeDrain::canBegin() {
    if (hasBegun_) return true;
    if (!share_) share_ = lock_->tryTake();
    if (!share_) {
        waitFor(SendingLock::retryWait, true);
        return false;
    }
    // What another process has stored meanwhile is not known here.
    changes_->refresh();
    hasBegun_ = changes_->reclaim();
    if (!hasBegun_) backOff();
    return hasBegun_;
}

void ChangeDrain::claim() {
    std::size_t present = 0;
    {
        platform::MutexLock lock(mutex_);
        present = claimed_.size() + requests_;
    }
    // A few at a time would each have a commit of their own.
    if (present > mostClaims / 2) return sendClaimed();
    auto claims = changes_->claim(mostClaims - present);
    if (claims.hasFailed) backOff();
    {
        platform::MutexLock lock(mutex_);
        claimed_.insert(claimed_.end(), claims.transactionIDs.begin(), claims.transactionIDs.end());
        isLineOpen_ = !isWaiting_;
    }
    sendClaimed();
}

/// Runs on any thread.
void ChangeDrain::sendClaimed() {
    for (;;) {
        std::string next;
        {
            platform::MutexLock lock(mutex_);
            if (!isLineOpen_ || claimed_.empty() || requests_ == mostRequests) return;
            next = std::move(claimed_.front());
            claimed_.pop_front();
            ++requests_;
        }
        ++sendCount_;
        changes_->send(next, [weak = platform::weakSelf(this), next](ChangeAnswer answer) {
            if (auto self = weak.lock()) self->answered({next, std::move(answer)});
        });
    }
}

/// Runs on any thread. Nothing follows a request without an answer before the drain has waited.
void ChangeDrain::answered(DrainedChanges::Answer answer) {
    bool isFirst = false;
    {
        platform::MutexLock lock(mutex_);
        --requests_;
        if (answer.answer.outcome == ChangeAnswer::Outcome::noAnswer) isLineOpen_ = false;
        answers_.push_back(std::move(answer));
        isFirst = !std::exchange(isTakingIn_, true);
    }
    sendClaimed();
    if (isFirst) onQueue([](ChangeDrain& self) { self.takeIn(); });
}

void ChangeDrain::takeIn() {
    std::vector<DrainedChanges::Answer> answers;
    {
        platform::MutexLock lock(mutex_);
        answers.swap(answers_);
        isTakingIn_ = false;
    }
    for (auto& each : answers)
        if (auto silence = each.answer.silence) current_.isSignedOut = silence == ChangeAnswer::Silence::notSignedIn;
    auto settlement = changes_->settle(std::move(answers));
    if (settlement.hasSettled) backOff_.reset();
    if (settlement.hasLeft && isOn_) backOff();
    pass();
}

/// Gives back what was claimed and not sent.
void ChangeDrain::closeLine() {
    std::deque<std::string> unsent;
    {
        platform::MutexLock lock(mutex_);
        isLineOpen_ = false;
        unsent.swap(claimed_);
    }
    if (!unsent.empty()) changes_->giveBack({unsent.begin(), unsent.end()});
}

/// Requests that were on their way together count once.
void ChangeDrain::backOff() {
    if (isWaiting_) return;
    waitFor(backOff_.next(), false);
}

void ChangeDrain::waitFor(std::chrono::milliseconds duration, bool isLockedOut) {
    isWaiting_ = true;
    current_.isLockedOut = isLockedOut;
    current_.since = isLockedOut ? std::nullopt : backOff_.since();
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

/// Frees the lock and calls those who wait for the end, unless a request is on its way or its answer is not stored.
void ChangeDrain::rest() {
    {
        platform::MutexLock lock(mutex_);
        if (requests_ > 0 || !answers_.empty() || !claimed_.empty()) return;
    }
    hasBegun_ = false;
    share_.reset();
    for (auto& callback : std::exchange(resting_, {})) callback();
}

void ChangeDrain::publish() {
    platform::MutexLock lock(mutex_);
    bool isSending = requests_ > 0 || !answers_.empty();
    current_.state = isSending ? State::sending : !isOn_ ? State::off : isWaiting_ ? State::waiting : State::idle;
    published_ = current_;
}

}  // namespace tarvo
