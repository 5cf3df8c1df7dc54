#pragma once

#include <memory>

#include "tarvobase/metadata/Stores.h"
#include "tarvobase/transaction/TransactionManager.h"

namespace tarvo {

/// Puts the current queue of changes together.
struct TransactionAssembler {
    /// Returns a manager with its executors and its two schedulers, which are off. The stores must have a database. The
    /// lock is that of everything in this process that sends changes of the database.
    static std::shared_ptr<TransactionManager> getTransactionManager(
        const Stores& stores, std::shared_ptr<SendingLock> sendingLock = std::make_shared<SendingLock>());
    /// Makes one of the schedulers. The limits are those of the configuration as it is now.
    static std::shared_ptr<TransactionSchedulerContract> makeTransactionSynchronizer(
        bool isAttachmentSync, const Stores& stores, const std::shared_ptr<TransactionRunner>& txnRunner);
};

}  // namespace tarvo
