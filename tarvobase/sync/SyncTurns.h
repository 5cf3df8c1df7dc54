#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "platform/ProcessState.h"
#include "platform/ThreadSafety.h"
#include "tarvobase/configuration/Scope.h"

namespace tarvo {

/// Lets the syncs of one thing, such as the views of a module, run one after the other. An answer that is under way may
/// be older than what the caller wants to see, so a call during a run gets one more run after it. Callers that wait for
/// the same thing share that run. Any thread may use it.
template <class Outcome>
class SyncTurns {
public:
    static SyncTurns& shared() { return platform::ProcessState::current().get<SyncTurns>(); }

    using Listener = std::function<void(const Outcome&)>;
    /// A run. Its release ends it: with the outcome that was set, or with `Outcome()`, which stands for a failure, if
    /// none was.
    class Turn {
    public:
        explicit Turn(std::function<void(const Outcome&)> ended) : ended_(std::move(ended)) {}
        ~Turn() { ended_(outcome); }
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;
        Outcome outcome{};

    private:
        const std::function<void(const Outcome&)> ended_;
    };
    using Run = std::function<void(std::shared_ptr<Turn>)>;

    /// Calls `run` as soon as no other run for `what` is under way, on this thread or on the one that ends the other
    /// run. `ended` is called on the thread that ends the run which serves this call.
    void ask(const Scope& scope, const std::string& what, Run run, Listener ended) {
        Key key{scope.account, scope.organisation, scope.databaseAdapter.get(), what};
        {
            platform::MutexLock lock(mutex_);
            auto& entry = entries_[key];
            if (entry.isRunning) {
                entry.next = std::move(run);
                entry.waiting.push_back(std::move(ended));
                return;
            }
            entry.isRunning = true;
            entry.listeners.push_back(std::move(ended));
        }
        start(key, run);
    }

private:
    using Key = std::tuple<std::string, std::string, const void*, std::string>;
    struct Entry {
        bool isRunning = false;
        std::vector<Listener> listeners;
        Run next;
        std::vector<Listener> waiting;
    };

    void start(const Key& key, const Run& run) {
        run(std::make_shared<Turn>([key](const Outcome& outcome) { shared().end(key, outcome); }));
    }

    void end(const Key& key, const Outcome& outcome) {
        std::vector<Listener> listeners;
        Run next;
        {
            platform::MutexLock lock(mutex_);
            auto found = entries_.find(key);
            if (found == entries_.end()) return;
            auto& entry = found->second;
            listeners = std::exchange(entry.listeners, std::exchange(entry.waiting, {}));
            next = std::exchange(entry.next, nullptr);
            if (!next) entries_.erase(found);
        }
        for (auto& listener : listeners) listener(outcome);
        if (next) start(key, next);
    }

    platform::Mutex mutex_;
    std::map<Key, Entry> entries_ TARVO_GUARDED_BY(mutex_);
};

}  // namespace tarvo
