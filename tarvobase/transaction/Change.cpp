#include "tarvobase/transaction/Change.h"

namespace tarvo {

namespace {

/// The error of a change that was given up has no details: what the server said last says why.
ErrorResponse withLastWords(ErrorResponse error, const std::optional<ErrorResponse>& lastRefusal) {
    if (!error.details && lastRefusal && *lastRefusal != error)
        error.details = ValueMap{{"lastRefusal", lastRefusal->toJSON()}};
    return error;
}

}  // namespace

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
            .error = row.errorResponse ? withLastWords(*row.errorResponse, entry.lastRefusal) : entry.lastRefusal};
}

}  // namespace tarvo
