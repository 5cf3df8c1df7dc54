#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Result.h"
#include "platform/ThreadSafety.h"
#include "sandbox/Message.h"

namespace tarvo::sandbox {

enum class FaultKind {
    /// Waits before the work.
    delay,
    /// Does the work, then waits before the answer.
    delayAfter,
    /// Ends the connection without doing the work.
    dropBefore,
    /// Does the work, then ends the connection without an answer.
    dropAfter,
    /// Sends half of the body under the length of the whole.
    truncate,
    /// Answers a page instead of JSON.
    nonJson,
    /// Answers that the whole request failed, without doing the work.
    errorEnvelope,
    /// Answers values of other types at one level of the answer.
    wrongTypes,
    /// Leaves entries out of the result.
    missingBlocks,
    /// Cuts every row of the entries to its first half.
    shortRows,
    /// Sends every entry twice.
    repeatBlocks,
    /// Leaves the ids of records out of the answer.
    missingIds,
    /// Answers another id in the place of each.
    foreignIds,
    /// Answers in the envelope of the older calls.
    olderEnvelope,
    /// Answers this number of entries: the first ones, and copies of the last one where there are too few.
    entries,
    /// Names no time in the answer.
    noResponseTime,
    /// Leaves "nodata" out of the entries.
    noNodata,
};

/// Says what goes wrong with a call, and how often.
struct Fault {
    /// The name of the call, or "*" for every call.
    std::string call;
    FaultKind kind = FaultKind::delay;
    /// How many more calls the fault hits; nullopt until it is cleared.
    std::optional<std::int64_t> times;
    std::chrono::milliseconds duration{0};
    /// The entries of the result ("tables", "Leads") that a fault of the answer touches; empty means all.
    std::vector<std::string> blocks;
    /// The one row of the "data" of these entries that `wrongTypes` and `shortRows` touch; nullopt for all.
    std::optional<std::size_t> row;
    /// The level of `wrongTypes`, see `breakTypes`.
    int level = 0;
    /// The id that `foreignIds` answers.
    std::string id = "1000000000000000001";
    /// The number of entries of `entries`.
    std::size_t entries = 0;
    /// The HTTP status, code and message of `errorEnvelope`.
    int status = 200;
    std::string code = "INTERNAL_ERROR";
    std::string message = "The request could not be processed.";
};

std::string_view faultName(FaultKind kind);

/// Reads a fault from the JSON of a control call. A failure says what is wrong with it.
Result<Fault, std::string> parseFault(const Value& json);
Value describeFault(const Fault& fault);

/// Holds the faults that are set, in order. The first fault that names a call hits it. A fault that has used up its
/// times is removed, so that a sequence of faults is a script. Safe to use from any thread.
class FaultSwitch {
public:
    void add(Fault fault);
    void clear();
    /// Counts and returns the fault that hits this call; nullopt if there is none.
    std::optional<Fault> take(std::string_view call);
    std::vector<Fault> all() const;
    /// Returns how many calls a fault has hit.
    std::int64_t hits() const;

private:
    mutable platform::Mutex mutex_;
    std::vector<Fault> faults_ TARVO_GUARDED_BY(mutex_);
    std::int64_t hits_ TARVO_GUARDED_BY(mutex_) = 0;
};

/// Returns whether a fault of this kind changes values of the answer.
bool touchesContent(FaultKind kind);

/// Damages an answer as the fault says; kinds that do not touch the content leave it unchanged.
void damage(Value& answer, const Fault& fault);

}  // namespace tarvo::sandbox
