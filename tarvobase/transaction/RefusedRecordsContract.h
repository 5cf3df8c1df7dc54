#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/Object.h"
#include "tarvobase/value_objects/transaction/RecordDependency.h"

namespace tarvo {

/// The queries that lists make to the changes that the server refused. From any thread; each blocks its caller.
class RefusedRecordsContract : public virtual platform::Object {
public:
    using RecordIds = std::vector<std::string>;

    /// Returns the ids of a module's records whose changes of these kinds the server refused with this message, each id
    /// once. Returns nullopt if the queue cannot be read.
    virtual std::optional<RecordIds> getRecordIds(const std::string& moduleName,
                                                  const std::vector<RecordDependency::Kind>& kinds,
                                                  const std::string& errorMessage) = 0;
};

}  // namespace tarvo
