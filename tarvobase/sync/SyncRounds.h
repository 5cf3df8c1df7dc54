#pragma once

#include <atomic>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "platform/Object.h"
#include "platform/ThreadSafety.h"
#include "tarvobase/configuration/Scope.h"
#include "tarvobase/sync/SyncRound.h"
#include "tarvobase/value_objects/module/Module.h"

namespace tarvo {

class RecordsSyncDataManagerDelegate;
class SyncRoundUnderWay;

/// What a round is expected to bring.
enum class SyncRoundSize {
    any,    ///< perhaps pages full of records
    small,  ///< little or nothing, since the module was in step a short time ago
};

/// Asks for rounds, and runs them if it is the first who asked.
class SyncRoundRunner : public virtual platform::Object {
public:
    /// Runs a round, on a background queue, and ends it with `SyncRounds::end`.
    virtual void runRound(std::shared_ptr<SyncRoundUnderWay> round) = 0;
    /// Returns who is notified of the rounds that it has asked for, or null.
    virtual std::shared_ptr<RecordsSyncDataManagerDelegate> roundListener() const = 0;
};

/// A round from the call that asks for it to its end. Any thread may use it.
class SyncRoundUnderWay {
public:
    using Runners = std::vector<std::shared_ptr<SyncRoundRunner>>;

    SyncRoundUnderWay(Module module, SyncRoundSize size, Runners askers)
        : module(std::move(module)), size(size), askers_(std::move(askers)) {
        progress_.moduleName = this->module.moduleName;
    }

    const Module module;
    const SyncRoundSize size;
    /// Those who asked for it. The first one runs it. Others may join until it runs.
    const Runners& askers() const { return askers_; }

    bool isStopped() const { return isStopped_; }
    SyncRound progress() const {
        platform::MutexLock lock(mutex_);
        return progress_;
    }
    /// Returns the time of the oldest answer beside the round that was stored during it.
    std::optional<std::int64_t> oldestAnswer() const {
        platform::MutexLock lock(mutex_);
        return oldestAnswer_;
    }
    void setProgress(SyncRound progress) {
        platform::MutexLock lock(mutex_);
        progress_ = std::move(progress);
    }

private:
    friend class SyncRounds;
    Runners askers_;
    std::atomic<bool> isStopped_ = false;
    mutable platform::Mutex mutex_;
    SyncRound progress_ TARVO_GUARDED_BY(mutex_);
    std::optional<std::int64_t> oldestAnswer_ TARVO_GUARDED_BY(mutex_);
};

/// The rounds of this process, of which a module never has two at a time: one that began earlier could store a page
/// that is older than the other's, and would then move the watermark past it. A call for a module whose round is under
/// way gets one more round after it, since the page that is coming may be older than what the caller wants to see.
/// Callers that wait for the same module share that round. Any thread may use it.
class SyncRounds {
public:
    static SyncRounds& shared();

    /// Rounds that run at a time. Each holds a page in memory, which has up to 10,000 records. Small ones hold next to
    /// nothing, so that several of them count as one.
    static constexpr std::size_t maximumRounds = 4, smallRoundsPerRound = 8;

    /// Asks for a round of a module, which begins now or as soon as it may. Returns false if the caller waits for a
    /// round of the module already; that round serves this call as well.
    bool ask(const Scope& scope, const Module& module, SyncRoundSize size, std::shared_ptr<SyncRoundRunner> asker);
    /// Ends a round, and starts those that may begin now. Returns the callers whose round was stopped while it waited
    /// for this one: for them this round is the end.
    SyncRoundUnderWay::Runners end(const Scope& scope, const SyncRoundUnderWay& round);

    /// Notes that records of a module were stored which the server sent at this time, outside a round.
    void noteAnswer(const Scope& scope, const std::string& moduleName, std::int64_t time);

    bool isUnderWay(const Scope& scope, const std::string& moduleName) const;
    /// Returns the rounds under way, also those that wait for their turn, by module name.
    std::vector<SyncRound> underWay(const Scope& scope) const;
    /// A call that asks for rounds soon, on another thread.
    struct Call {
        std::atomic<bool> isStopped = false;
    };
    /// Announces a call, which lasts as long as the pointer.
    std::shared_ptr<const Call> announce();

    /// Stops all rounds and announced calls. Rounds that wait never ask the server, and one that runs ends after its
    /// page. A later call gets a round of its own. `whenStopped` runs once no round and no such call is left, on the
    /// thread that ended the last one or on the caller's.
    void stop(std::function<void()> whenStopped);

private:
    /// Account, organisation, database and module.
    using Key = std::tuple<std::string, std::string, const void*, std::string>;
    struct Entry {
        std::shared_ptr<SyncRoundUnderWay> round;
        SyncRoundUnderWay::Runners waiting;
        SyncRoundUnderWay::Runners dismissed;
    };
    static Key keyOf(const Scope& scope, const std::string& moduleName) {
        return {scope.account, scope.organisation, scope.databaseAdapter.get(), moduleName};
    }
    static std::size_t shareOf(const SyncRoundUnderWay& round) {
        return round.size == SyncRoundSize::small ? 1 : smallRoundsPerRound;
    }
    void startNext() TARVO_REQUIRES(mutex_);
    bool isIdle() TARVO_REQUIRES(mutex_);
    void callEnded();

    mutable platform::Mutex mutex_;
    std::map<Key, Entry> entries_ TARVO_GUARDED_BY(mutex_);
    std::deque<std::shared_ptr<SyncRoundUnderWay>> queued_ TARVO_GUARDED_BY(mutex_);
    std::size_t running_ TARVO_GUARDED_BY(mutex_) = 0;  // as small rounds
    std::vector<std::weak_ptr<Call>> calls_ TARVO_GUARDED_BY(mutex_);
    std::vector<std::function<void()>> whenStopped_ TARVO_GUARDED_BY(mutex_);
};

}  // namespace tarvo
