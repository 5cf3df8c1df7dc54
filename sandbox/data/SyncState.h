#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

namespace tarvo::sandbox {

/// Holds how the server answers clients that ask for changes, and what it has to remember for them. A caller holds the
/// server's lock.
struct SyncState {
    /// A page has at most this many records.
    std::size_t pageLimit = 10'000;
    /// Whether all pages of a round name the time of the first one as theirs.
    bool hasTimeOfRound = false;
    /// Whether each page is empty and says that more follow.
    bool isStuck = false;
    /// The times of the first pages, by account, module and watermark.
    std::map<std::string, std::int64_t> roundTimes = {};
    /// The latest time that a page has named. Later changes get later times.
    std::int64_t lastWatermark = 0;
    void nameTime(std::int64_t time) { lastWatermark = std::max(lastWatermark, time); }
    /// A list of which more records have changed is answered as too much for the changes alone.
    std::size_t listReset = 1'000;
};

}  // namespace tarvo::sandbox
