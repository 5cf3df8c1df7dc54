#pragma once

#include "tarvobase/metadata/Stores.h"
#include "tarvobase/transaction/RefusedRecordsContract.h"

namespace tarvo {

/// Answers from the queue of changes and the register of what the server said to them.
class RefusedChanges final : public RefusedRecordsContract {
public:
    explicit RefusedChanges(const Stores& stores) : stores_(stores) {}
    std::optional<RecordIds> getRecordIds(const std::string& moduleName,
                                          const std::vector<RecordDependency::Kind>& kinds,
                                          const std::string& errorMessage) override;

private:
    const Stores stores_;
};

}  // namespace tarvo
