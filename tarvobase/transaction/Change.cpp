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

Change Change::of(const NTransaction& row, const ChangeEntry& entry) {
    return {.number = entry.number,
            .queue = ChangeQueue::current,
            .transactionId = std::to_string(row.id),
            .kind = std::string(caseName(row.kind)),
            .moduleName = row.module.rawValue(),
            .recordId = row.recordId,
            .enteredAt = entry.enteredAt,
            .attempts = entry.sends,
            .error = row.errorResponse ? row.errorResponse : entry.lastRefusal};
}

}  // namespace tarvo
