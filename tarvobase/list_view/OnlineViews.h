#pragma once

#include <set>
#include <string>
#include <tuple>

#include "platform/ThreadSafety.h"

namespace tarvo {

/// Remembers which views that need the server (`isOfflineSupported` false) this run of the program has met:
/// `onlineCVList`. Belongs to the process state, because a view that one use case has met counts as met for all. May be
/// called from any thread.
///
/// A view is unknown, then requested, then answered. Until its first answer the rows of its map come from a former run;
/// that answer replaces them.
class OnlineViews {
public:
    /// A view id alone does not identify a view, because another module or account may use the same id.
    using Key = std::tuple<std::string, std::string, std::string>;  // account, module, view

    /// Records a request. Returns true for the first request of this run.
    bool noteRequest(const Key& view) {
        platform::MutexLock lock(mutex_);
        return onlineCVList_.insert(view).second;
    }
    /// Records an answer that begins the list. Returns true for the first such answer of this run.
    bool noteAnswer(const Key& view) {
        platform::MutexLock lock(mutex_);
        return answered_.insert(view).second;
    }
    bool isAnswered(const Key& view) const {
        platform::MutexLock lock(mutex_);
        return answered_.contains(view);
    }

private:
    mutable platform::Mutex mutex_;
    std::set<Key> onlineCVList_ TARVO_GUARDED_BY(mutex_);
    std::set<Key> answered_ TARVO_GUARDED_BY(mutex_);
};

}  // namespace tarvo
