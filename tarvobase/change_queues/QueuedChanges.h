#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/Data.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/transaction/Change.h"
#include "tarvobase/transaction/ChangeQueueStatus.h"
#include "tarvobase/value_objects/transaction/Transaction.h"

namespace tarvo {

/// The user's view of the changes that wait, and their hand on them. Each call blocks its caller; any thread may use
/// it.
class QueuedChanges {
public:
    struct Content {
        platform::Data uriData;              ///< the parameters of the request, as JSON
        std::optional<platform::Data> body;  ///< its body
    };
    using Numbers = std::vector<std::int64_t>;
    /// What has become of a change.
    struct Outcome {
        std::int64_t number = 0;
        ChangeOutcome outcome = ChangeOutcome::unknown;
        /// The server's id once it is known. Absent if nothing is known of the change.
        std::optional<std::string> recordId;
        static constexpr auto fields() {
            return describe(field("number", &Outcome::number), field("outcome", &Outcome::outcome),
                            field("recordId", &Outcome::recordId));
        }
    };

    explicit QueuedChanges(const Stores& stores) : stores_(stores) {}

    /// Returns the changes of the organisation in the order in which they were made, or nullopt if a queue cannot be
    /// read. Rows that cannot be read are left out. A change that nothing in its queue holds up waits for what the
    /// status of that queue says.
    std::optional<std::vector<Change>> list(const ChangeQueueStatus& older, const ChangeQueueStatus& current) const;
    /// Returns what a change sends, or nullopt if there is no change of this number.
    std::optional<Content> content(std::int64_t number) const;
    /// Returns what has become of the changes with these numbers, in the order of the numbers, or nullopt if that
    /// cannot be read. The 1,000 changes that ended last are remembered.
    std::optional<std::vector<Outcome>> outcomes(const Numbers& numbers) const;
    /// Makes failed changes ready again: those of these numbers, or all. Changes that failed for the sake of one of
    /// them become ready with it. An edit leaves out what later edits of its record set; if nothing is left of it, it
    /// goes. Returns the numbers of the changes that are ready now, or nullopt if nothing could be stored. Wake the
    /// queue afterwards.
    std::optional<Numbers> retry(const Numbers& numbers) const;

private:
    using Changes = std::optional<std::vector<Change>>;
    struct Entries;
    Changes list() const;
    bool addOlder(const Entries& entries, std::vector<Change>& changes) const;
    bool addCurrent(const Entries& entries, std::vector<Change>& changes) const;
    std::optional<std::vector<ChangeEnd>> endsOf(const Numbers& numbers) const;
    bool retryOlder(const Change& listed) const;
    bool retryCurrent(const Change& listed) const;

    const Stores stores_;
};

}  // namespace tarvo
