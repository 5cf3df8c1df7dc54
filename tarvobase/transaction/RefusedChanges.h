#pragma once

#include "tarvobase/metadata/Stores.h"
#include "tarvobase/transaction/RefusedRecordsContract.h"

namespace tarvo {

/// Answers from both queues of changes and the register of what the server said to them.
class RefusedChanges final : public RefusedRecordsContract {
public:
    explicit RefusedChanges(const Stores& stores) : stores_(stores) {}
    std::optional<RecordIds> getRecordIds(const std::string& moduleName,
                                          const std::vector<RecordDependency::Kind>& kinds,
                                          const std::string& errorMessage) override;

private:
    struct ChangedRecord {
        std::string moduleName, recordId;
        std::optional<RecordDependency::Kind> kind;
    };
    std::optional<ChangedRecord> changeOf(const ChangeEntry& entry) const;

    const Stores stores_;
};

}  // namespace tarvo
