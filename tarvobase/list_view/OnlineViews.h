#pragma once

#include <set>
#include <string>
#include <tuple>

#include "platform/ThreadSafety.h"
#include "tarvobase/value_objects/view/CustomView.h"

namespace tarvo {

/// Remembers which views that need the server (`isOfflineSupported` false) this run of the program has met:
/// `onlineCVList`. Belongs to the process state, because a view that one use case has met counts as met for all. May be
/// called from any thread.
///
/// A view is unknown, then requested, then answered. Until its first answer the rows of its map come from a former run;
/// that answer replaces them.
class OnlineViews {
public:
    static OnlineViews& shared();

    /// Records a request to the server. Returns true for the first request of this run for a view that needs the
    /// server.
    bool addRequest(const std::string& account, const CustomView& view);
    /// Records that an answer which begins the list was stored.
    void addAnswer(const std::string& account, const CustomView& view);
    /// Returns whether the stored rows of a view come from a former run, so that the first answer of this run replaces
    /// them.
    bool awaitsReplacement(const std::string& account, const CustomView& view) const;

private:
    /// A view id alone does not identify a view, because another module or account may use the same id.
    using Key = std::tuple<std::string, std::string, std::string>;  // account, module, view
    static Key keyOf(const std::string& account, const CustomView& view) {
        return {account, view.moduleName, view.viewID};
    }

    mutable platform::Mutex mutex_;
    std::set<Key> onlineCVList_ TARVO_GUARDED_BY(mutex_);
    std::set<Key> answered_ TARVO_GUARDED_BY(mutex_);
};

}  // namespace tarvo
