#pragma once

#include <memory>

#include "tarvobase/metadata/Stores.h"
#include "tarvobase/transaction/TransactionManager.h"

namespace tarvo {

/// Puts the current queue of changes together.
struct TransactionAssembler {
    /// Returns a manager with its executors and its two schedulers, which are off. The stores must have a database.
    static std::shared_ptr<TransactionManager> getTransactionManager(const Stores& stores);
    /// Makes one of the schedulers. The limits are those of the configuration as it is now.
    static std::shared_ptr<TransactionSchedulerContract> makeTransactionSynchronizer(
        bool isAttachmentSync, const Stores& stores, const std::shared_ptr<TransactionRunner>& txnRunner);
};

}  // namespace tarvo
