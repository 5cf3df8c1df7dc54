#pragma once

#include <mutex>
#include <set>
#include <string>
#include <tuple>

namespace tarvo {

/// Views that need the server (`isOfflineSupported` false), as this run of the program has met them: `onlineCVList`. Of
/// the process state, since a view that one use case has met is met for all. From any thread.
///
/// A view is unknown, then requested, then answered. Until its first answer the rows of its map are those of a former
/// run; that answer takes their place.
class OnlineViews {
public:
    /// A view id alone does not tell a view: another module or account may have the same.
    using Key = std::tuple<std::string, std::string, std::string>;  // account, module, view

    /// Notes a request; true for the first one of this run.
    bool noteRequest(const Key& view) {
        std::lock_guard lock(mutex_);
        return onlineCVList_.insert(view).second;
    }
    /// Notes an answer that begins the list; true for the first one of this run.
    bool noteAnswer(const Key& view) {
        std::lock_guard lock(mutex_);
        return answered_.insert(view).second;
    }
    bool isAnswered(const Key& view) const {
        std::lock_guard lock(mutex_);
        return answered_.contains(view);
    }

private:
    mutable std::mutex mutex_;
    std::set<Key> onlineCVList_, answered_;
};

}  // namespace tarvo
