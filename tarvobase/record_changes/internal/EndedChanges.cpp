#include "tarvobase/record_changes/internal/EndedChanges.h"

#include <string>

namespace tarvo {

bool endOlderChanges(const Stores& stores, const std::vector<Transaction>& rows, ChangeOutcome outcome) {
    std::vector<std::string> ids;
    std::vector<EndedChange> ended;
    for (auto& row : rows) {
        ids.push_back(row.transactionID);
        ended.push_back({row.transactionID, row.moduleName, row.recordID});
    }
    return stores.transactions()->removeTransactionsWithIds(ids) &&
           stores.changeRegister()->end(ChangeQueue::older, ended, outcome);
}

}  // namespace tarvo
