#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/Object.h"
#include "tarvobase/value_objects/transaction/RecordDependency.h"

namespace tarvo {

/// The records of a view that the server has not given for it, as far as the changes made here tell.
struct UnlistedRecords {
    std::vector<std::string> refused;  ///< the server refused their change; they belong to the view
    /// They were added here, and belong to the view if its own condition accepts them: records whose add is in the
    /// queue, and accepted ones about which the view has had no answer since. Accepted records have their real ids.
    std::vector<std::string> added;

    bool isEmpty() const { return refused.empty() && added.empty(); }
};

/// Which records of which view are asked for.
struct UnlistedRecordsQuery {
    std::string moduleName;
    std::string viewId;
    std::vector<RecordDependency::Kind> refusedKinds;  ///< kinds of refused changes: `add` and `edit` are known
    std::string refusal;                               ///< the server's message to them
    std::int64_t lastAdded = 0;                        ///< `lastAddedRecord` when the view's last answer was asked for
};

/// The queries that lists make to the changes that are made here. May be called from any thread; each call blocks its
/// caller.
class UnlistedRecordsContract : public virtual platform::Object {
public:
    /// Returns nullopt if the database cannot be read.
    virtual std::optional<UnlistedRecords> getUnlistedRecords(const UnlistedRecordsQuery& query) = 0;
    /// Returns a number that rises with each record that was added here and that the server has accepted.
    virtual std::int64_t lastAddedRecord() = 0;
};

}  // namespace tarvo
