#include "tarvobase/change_queues/TransactionAssembler.h"

#include "tarvobase/change_queues/TransactionExecutorDI.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/transaction/TransactionScheduler.h"

namespace tarvo {

std::shared_ptr<TransactionManager> TransactionAssembler::getTransactionManager(const Stores& stores) {
    auto manager = std::make_shared<TransactionManager>(stores, stores.userDefaults);
    manager->transactionExecutorDI = std::make_shared<TransactionExecutorDI>();
    manager->attachmentScheduler = makeTransactionSynchronizer(true, stores, manager);
    manager->normalScheduler = makeTransactionSynchronizer(false, stores, manager);
    return manager;
}

std::shared_ptr<TransactionSchedulerContract> TransactionAssembler::makeTransactionSynchronizer(
    bool isAttachmentSync, const Stores& stores, const std::shared_ptr<TransactionRunner>& txnRunner) {
    auto& configuration = CommonConfigration::sharedInstance();
    return std::make_shared<TransactionScheduler>(
        TransactionScheduler::Parts{.isAttachmentSync = isAttachmentSync,
                                    .databaseAdapter = stores.databaseAdapter(),
                                    .txnPersistence = stores.currentTransactions(),
                                    .txnRunner = txnRunner,
                                    .maxSyncAttempt = configuration.maxSyncAttempt.get(),
                                    .maxSyncTimeInterval = configuration.maxSyncTimeInterval.get()});
}

}  // namespace tarvo
