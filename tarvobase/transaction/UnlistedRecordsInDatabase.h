#pragma once

#include "tarvobase/metadata/Stores.h"
#include "tarvobase/transaction/UnlistedRecordsContract.h"

namespace tarvo {

/// Answers from both queues of changes, the register of what the server said to them, and the ids of accepted records.
/// Lists ask with every page, and mostly there is nothing to find, so the answer takes one statement, and none as long
/// as nothing was ever changed here.
class UnlistedRecordsInDatabase final : public UnlistedRecordsContract {
public:
    explicit UnlistedRecordsInDatabase(const Stores& stores) : stores_(stores) {}
    std::optional<UnlistedRecords> getUnlistedRecords(const UnlistedRecordsQuery& query) override;
    std::int64_t lastAddedRecord() override { return stores_.recordIdAliases()->lastNumber(); }

private:
    const Stores stores_;
};

}  // namespace tarvo
