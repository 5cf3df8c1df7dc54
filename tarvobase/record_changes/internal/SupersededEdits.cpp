#include "tarvobase/record_changes/internal/SupersededEdits.h"

#include <algorithm>

#include "tarvobase/record_changes/internal/ChangePayload.h"
#include "tarvobase/record_changes/internal/EndedChanges.h"
#include "tarvobase/record_changes/internal/QueuedChange.h"
#include "tarvobase/records/RecordUtil.h"
#include "tarvobase/value_objects/transaction/ChangeRegister.h"

namespace tarvo {

namespace {

bool isLaterEdit(const Transaction& change, const Transaction& failed) {
    return change.operationType == TransactionType::editRecord && change.moduleName == failed.moduleName &&
           change.transactionTime > failed.transactionTime;
}

/// Stores a shorter payload of a failed edit. It gets a new key, unless the server may have applied it under its own.
bool storeShorter(const Stores& stores, Transaction failed, const ValueMap& payload) {
    auto changes = stores.changeRegister();
    auto entries = changes->entriesOf(ChangeQueue::older, {failed.transactionID});
    failed.dataJSON = ChangePayload::body(payload);
    if (!entries || !failed.dataJSON || !stores.transactions()->storeTransaction(failed)) return false;
    if (entries->empty() || !entries->front().isKnownToBeRefused()) return true;
    auto& entry = entries->front();
    return changes->renewKey(entry.number) && changes->noteRefusal(entry.number, *entry.lastRefusal, false);
}

}  // namespace

bool SupersededEdits::leaveOut(const Stores& stores, const Transaction& failed,
                               const std::vector<Transaction>& others) {
    auto payload = ChangePayload::of(failed);
    if (!payload) return true;
    auto rest = *payload;
    for (auto& other : others) {
        auto set = isLaterEdit(other, failed) ? ChangePayload::of(other) : std::nullopt;
        if (!set) continue;
        for (auto& entry : *set)
            if (entry.name != RecordConstants::FieldAPINames::Id) rest.remove(entry.name);
    }
    if (rest.size() == payload->size()) return true;
    // The id of the record is always left.
    if (rest.size() > 1) return storeShorter(stores, failed, rest);
    return endOlderChanges(stores, {failed}, ChangeOutcome::merged);
}

bool SupersededEdits::leaveOutAccepted(const Stores& stores, const Transaction& accepted,
                                       const std::vector<Transaction>& rows) {
    return std::all_of(rows.begin(), rows.end(), [&](auto& row) {
        bool isFailedEdit = row.operationType == TransactionType::editRecord && QueuedChange(row).hasFailed();
        return !isFailedEdit || leaveOut(stores, row, {accepted});
    });
}

}  // namespace tarvo
