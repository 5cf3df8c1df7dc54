#include "tarvobase/transaction/RefusedChanges.h"

#include <algorithm>

#include "platform/Text.h"

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
std::optional<RefusedChanges::RecordIds> RefusedChanges::getRecordIds(const std::string& moduleName,
                                                                      const std::vector<RecordDependency::Kind>& kinds,
                                                                      const std::string& errorMessage) {
    auto entries = stores_.changeRegister()->entries();
    if (!entries) return std::nullopt;
    RecordIds ids;
    for (auto& entry : *entries) {
        if (!entry.lastRefusal || entry.lastRefusal->message != errorMessage) continue;
        auto change = changeOf(entry);
        bool isWanted = change && change->moduleName == moduleName && change->kind &&
                        std::find(kinds.begin(), kinds.end(), *change->kind) != kinds.end();
        if (isWanted && std::find(ids.begin(), ids.end(), change->recordId) == ids.end())
            ids.push_back(change->recordId);
    }
    return ids;
}

std::optional<RefusedChanges::ChangedRecord> RefusedChanges::changeOf(const ChangeEntry& entry) const {
    if (entry.queue == ChangeQueue::older) {
        auto row = stores_.transactions()->getTransaction(entry.transactionId);
        if (!row || !row.value()) return std::nullopt;
        return ChangedRecord{row.value()->moduleName, row.value()->recordID, kindOf(row.value()->operationType)};
    }
    auto rows =
        stores_.currentTransactions()->getTransactionsWithIds({text::toInteger(entry.transactionId).value_or(0)});
    if (!rows || rows->empty()) return std::nullopt;
    auto& row = rows->front();
    return ChangedRecord{row.module.rawValue(), row.recordId, depndencyType(row.kind)};
}

}  // namespace tarvo
