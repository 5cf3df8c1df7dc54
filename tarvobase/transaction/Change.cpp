#include "tarvobase/transaction/Change.h"

namespace tarvo {

Change Change::of(const Transaction& row, const ChangeEntry& entry) {
    return {.number = entry.number,
            .queue = ChangeQueue::older,
            .transactionId = row.transactionID,
            .kind = std::string(caseName(row.operationType)),
            .moduleName = row.moduleName,
            .recordId = row.recordID,
            .enteredAt = entry.enteredAt,
            .attempts = entry.sends,
            .error = entry.lastRefusal};
}

}  // namespace tarvo
