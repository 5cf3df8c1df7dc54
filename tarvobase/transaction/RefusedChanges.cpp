#include "tarvobase/transaction/RefusedChanges.h"

#include <algorithm>

namespace tarvo {

namespace {

std::optional<RecordDependency::Kind> kindOf(TransactionType type) {
    switch (type) {
        case TransactionType::addRecord:
            return RecordDependency::Kind::add;
        case TransactionType::editRecord:
            return RecordDependency::Kind::edit;
        case TransactionType::deleteRecord:
            return RecordDependency::Kind::delete_;
        default:
            return std::nullopt;
    }
}

}  // namespace

/// Lists ask this with each page, and refusals are rare, so the register is asked first.
std::optional<RefusedRecordsContract::RecordIds> RefusedChanges::getRecordIds(
    const std::string& moduleName, const std::vector<RecordDependency::Kind>& kinds, const std::string& errorMessage) {
    auto entries = stores_.changeRegister()->entries();
    if (!entries) return std::nullopt;
    RecordIds ids;
    for (auto& entry : *entries) {
        bool isRefusedSo =
            entry.queue == ChangeQueue::older && entry.lastRefusal && entry.lastRefusal->message == errorMessage;
        auto row = isRefusedSo ? stores_.transactions()->getTransaction(entry.transactionId)
                               : TransactionPersistanceDelegate::Found(std::optional<Transaction>());
        if (!row || !row.value() || row.value()->moduleName != moduleName) continue;
        auto kind = kindOf(row.value()->operationType);
        bool isWanted = kind && std::find(kinds.begin(), kinds.end(), *kind) != kinds.end();
        if (isWanted && std::find(ids.begin(), ids.end(), row.value()->recordID) == ids.end())
            ids.push_back(row.value()->recordID);
    }
    return ids;
}

}  // namespace tarvo
