#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/DispatchQueue.h"
#include "platform/ThreadSafety.h"
#include "tarvobase/value_objects/transaction/NTransaction.h"

namespace tarvo {

/// The transactions that are held back, each with the timer that ends it. Any thread may use it.
class InactiveTransaction {
public:
    struct TransactionInfo {
        std::int64_t txnId = 0;
        std::string recordId;
        NTransaction::Kind kind = NTransaction::Kind::addRecord;
        platform::Timer timer;
    };

    /// Tracks a transaction, in place of one of the same id.
    void add(TransactionInfo info);
    /// Returns the ids of held-back transactions of a record.
    std::vector<std::int64_t> idsOf(const std::string& recordId) const;
    /// Cancels the timer of a transaction and forgets it.
    void removeTransactionInfo(std::int64_t txnId);
    void removeAll();

private:
    mutable platform::Mutex mutex_;
    std::map<std::int64_t, TransactionInfo> transactionsMap_ TARVO_GUARDED_BY(mutex_);
};

}  // namespace tarvo
