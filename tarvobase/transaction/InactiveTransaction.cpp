#include "tarvobase/transaction/InactiveTransaction.h"

#include <utility>

namespace tarvo {

void InactiveTransaction::add(TransactionInfo info) {
    platform::MutexLock lock(mutex_);
    auto& place = transactionsMap_[info.txnId];
    place.timer.cancel();
    place = std::move(info);
}

std::vector<std::int64_t> InactiveTransaction::idsOf(const std::string& recordId) const {
    platform::MutexLock lock(mutex_);
    std::vector<std::int64_t> ids;
    for (auto& [id, info] : transactionsMap_)
        if (info.recordId == recordId) ids.push_back(id);
    return ids;
}

void InactiveTransaction::removeTransactionInfo(std::int64_t txnId) {
    platform::MutexLock lock(mutex_);
    auto found = transactionsMap_.find(txnId);
    if (found == transactionsMap_.end()) return;
    found->second.timer.cancel();
    transactionsMap_.erase(found);
}

void InactiveTransaction::removeAll() {
    platform::MutexLock lock(mutex_);
    for (auto& entry : transactionsMap_) entry.second.timer.cancel();
    transactionsMap_.clear();
}

}  // namespace tarvo
