#include "tarvobase/sync/SyncRounds.h"

#include <algorithm>
#include <utility>

#include "platform/ProcessState.h"
#include "tarvobase/utils/CommonUtils.h"

namespace tarvo {

SyncRounds& SyncRounds::shared() { return platform::ProcessState::current().get<SyncRounds>(); }

bool SyncRounds::ask(const Scope& scope, const Module& module, SyncRoundSize size,
                     std::shared_ptr<SyncRoundRunner> asker) {
    platform::MutexLock lock(mutex_);
    auto& entry = entries_[keyOf(scope, module.moduleName)];
    if (entry.round) {
        bool hasBegun = std::find(queued_.begin(), queued_.end(), entry.round) == queued_.end();
        auto& askers = hasBegun || entry.round->isStopped() ? entry.waiting : entry.round->askers_;
        if (std::find(askers.begin(), askers.end(), asker) != askers.end()) return false;
        askers.push_back(std::move(asker));
        return true;
    }
    entry.round = std::make_shared<SyncRoundUnderWay>(module, size, SyncRoundUnderWay::Runners{std::move(asker)});
    queued_.push_back(entry.round);
    startNext();
    return true;
}

void SyncRounds::startNext() {
    while (!queued_.empty() && running_ + shareOf(*queued_.front()) <= maximumRounds * smallRoundsPerRound) {
        running_ += shareOf(*queued_.front());
        CommonUtils::performAsyncInBackground(
            [round = std::move(queued_.front())] { round->askers().front()->runRound(round); });
        queued_.pop_front();
    }
}

SyncRoundUnderWay::Runners SyncRounds::end(const Scope& scope, const SyncRoundUnderWay& round) {
    SyncRoundUnderWay::Runners dismissed;
    std::vector<std::function<void()>> whenStopped;
    {
        platform::MutexLock lock(mutex_);
        auto found = entries_.find(keyOf(scope, round.module.moduleName));
        if (found == entries_.end() || found->second.round.get() != &round) return {};
        running_ -= shareOf(round);
        dismissed = std::move(found->second.dismissed);
        auto waiting = std::move(found->second.waiting);
        if (waiting.empty()) {
            entries_.erase(found);
        } else {
            found->second = {std::make_shared<SyncRoundUnderWay>(round.module, round.size, std::move(waiting)), {}, {}};
            queued_.push_back(found->second.round);
        }
        startNext();
        if (isIdle()) whenStopped = std::exchange(whenStopped_, {});
    }
    for (auto& stopped : whenStopped) stopped();
    return dismissed;
}

void SyncRounds::noteAnswer(const Scope& scope, const std::string& moduleName, std::int64_t time) {
    platform::MutexLock lock(mutex_);
    auto found = entries_.find(keyOf(scope, moduleName));
    if (found == entries_.end()) return;
    auto& round = *found->second.round;
    platform::MutexLock roundLock(round.mutex_);
    round.oldestAnswer_ = std::min(round.oldestAnswer_.value_or(time), time);
}

bool SyncRounds::isUnderWay(const Scope& scope, const std::string& moduleName) const {
    platform::MutexLock lock(mutex_);
    return entries_.contains(keyOf(scope, moduleName));
}

std::vector<SyncRound> SyncRounds::underWay(const Scope& scope) const {
    std::vector<SyncRound> rounds;
    platform::MutexLock lock(mutex_);
    for (auto& [key, entry] : entries_)
        if (key == keyOf(scope, entry.round->module.moduleName)) rounds.push_back(entry.round->progress());
    return rounds;
}

std::shared_ptr<const SyncRounds::Call> SyncRounds::announce() {
    std::shared_ptr<Call> call(new Call, [](Call* ended) {
        delete ended;
        shared().callEnded();
    });
    platform::MutexLock lock(mutex_);
    calls_.push_back(call);
    return call;
}

bool SyncRounds::isIdle() {
    std::erase_if(calls_, [](auto& call) { return call.expired(); });
    return entries_.empty() && calls_.empty();
}

void SyncRounds::callEnded() {
    std::vector<std::function<void()>> whenStopped;
    {
        platform::MutexLock lock(mutex_);
        if (isIdle()) whenStopped = std::exchange(whenStopped_, {});
    }
    for (auto& stopped : whenStopped) stopped();
}

void SyncRounds::stop(std::function<void()> whenStopped) {
    // Released after the lock, since the last pointer ends its call.
    std::vector<std::shared_ptr<Call>> stopped;
    {
        platform::MutexLock lock(mutex_);
        for (auto& [key, entry] : entries_) {
            entry.round->isStopped_ = true;
            entry.dismissed.insert(entry.dismissed.end(), entry.waiting.begin(), entry.waiting.end());
            entry.waiting.clear();
        }
        for (auto& each : calls_)
            if (auto call = each.lock()) {
                call->isStopped = true;
                stopped.push_back(std::move(call));
            }
        if (!isIdle()) return whenStopped_.push_back(std::move(whenStopped));
    }
    whenStopped();
}

}  // namespace tarvo
