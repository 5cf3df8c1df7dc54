#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/Object.h"
#include "tarvobase/transaction/RecordDependency.h"

namespace tarvo {

/// What other operations ask of the queue of changes. From any thread; blocks its caller.
class TransactionManagerContract : public virtual platform::Object {
public:
    using RecordIds = std::vector<std::string>;

    /// Ids of a module's records whose changes of these kinds the server refused with this message, each once. Absent
    /// when the queue cannot be read.
    virtual std::optional<RecordIds> getRecordIds(const std::string& moduleName,
                                                  const std::vector<RecordDependency::Kind>& kinds,
                                                  const std::string& errorMessage) = 0;
};

/// A queue that never holds a change, for programs that only read.
class EmptyTransactionManager final : public TransactionManagerContract {
public:
    std::optional<RecordIds> getRecordIds(const std::string&, const std::vector<RecordDependency::Kind>&,
                                          const std::string&) override {
        return RecordIds();
    }
};

}  // namespace tarvo
