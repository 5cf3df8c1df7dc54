#include "tarvobase/change_queues/TransactionAssembler.h"

#include "tarvobase/change_queues/TransactionExecutorDI.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/notes/NotesUseCases.h"
#include "tarvobase/notes/internal/AddNoteDM.h"
#include "tarvobase/notes/internal/EditNoteDM.h"
#include "tarvobase/record_changes/execution/RecordExecutors.h"
#include "tarvobase/record_changes/internal/SupersededEdits.h"
#include "tarvobase/transaction/TransactionScheduler.h"

namespace tarvo {

namespace {

using WeakManager = std::weak_ptr<TransactionManager>;

template <class Executor>
TransactionExecutorDI::Make executorOfRecords(const Stores& stores, const WeakManager& manager, int maxSingleMerge) {
    return [stores, manager, maxSingleMerge] {
        return std::make_shared<Executor>(ExecutionParts::of(stores, manager.lock(), maxSingleMerge));
    };
}

/// The manager owns its executors, so they must not own it.
std::shared_ptr<TransactionExecutorDI> executorsOf(const Stores& stores, const WeakManager& manager) {
    using K = NTransaction::Kind;
    auto limit = CommonConfigration::sharedInstance().maxSingleMerge.get();
    auto executors = std::make_shared<TransactionExecutorDI>();
    executors->serve({K::addRecord}, executorOfRecords<AddRecordExecutor>(stores, manager, limit));
    executors->serve({K::editRecord}, executorOfRecords<EditRecordExecutor>(stores, manager, limit));
    executors->serve({K::deleteRecord}, executorOfRecords<DeleteRecordExecutor>(stores, manager, limit));
    executors->serve({K::import}, executorOfRecords<ImportRecordExecutor>(stores, manager, limit));
    executors->serve({K::addTextNote, K::addVoiceNote},
                     [stores, manager] { return NotesAssembler::getAddNoteDM(stores, manager.lock()); });
    executors->serve({K::editNote},
                     [stores, manager] { return NotesAssembler::getEditNoteDM(stores, manager.lock()); });
    return executors;
}

}  // namespace

std::shared_ptr<TransactionManager> TransactionAssembler::getTransactionManager(
    const Stores& stores, std::shared_ptr<SendingLock> sendingLock) {
    auto manager = std::make_shared<TransactionManager>(stores, stores.userDefaults);
    manager->sendingLock = std::move(sendingLock);
    manager->transactionExecutorDI = executorsOf(stores, manager);
    NotesAssembler::moveSoundsLeftBehind(stores);
    manager->editSettled = [stores](auto& edit, auto number) {
        return SupersededEdits::leaveOutAccepted(stores, edit, number);
    };
    manager->isRecordIdTaken = NotesAssembler::hasSound;
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
