#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/DispatchQueue.h"
#include "tarvobase/metadata/GetModuleInfoDataManager.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/record_changes/internal/RecordIdReplacement.h"
#include "tarvobase/record_changes/wire/AddEditRecordNetworkService.h"
#include "tarvobase/record_changes/wire/ChangeAnswer.h"
#include "tarvobase/records/RecordPersistanceDelegate.h"
#include "tarvobase/transaction/TransactionExecutor.h"
#include "tarvobase/transaction/TransactionManagerContract.h"

namespace tarvo {

/// What the executors of records share. They belong to the scope of the stores.
struct ExecutionParts {
    Stores stores;
    std::shared_ptr<RecordPersistanceDelegate> recordPersistance;
    std::shared_ptr<GetModuleInfoDataManager> moduleDM;
    std::weak_ptr<TransactionManagerContract> transactionManager;  ///< owns its executors
    int maxSingleMerge = 3;                                        ///< `CommonConfigration.maxSingleMerge`

    /// Returns the fields of a module; without any if they cannot be read.
    FieldList metadataOf(const Module& module) const;
    static ExecutionParts of(const Stores& stores, const std::shared_ptr<TransactionManagerContract>& manager,
                             int maxSingleMerge);
};

/// A transaction of the current queue that can be sent.
struct ExecutedTransaction {
    NTransaction transaction;
    Module module;
    std::string key;  ///< the same UUID each time that the transaction is sent
    bool isRepeated;  ///< whether it was sent before
};

/// The frame of the executors that send records: it finds the module and the key of a transaction, lets a subclass send
/// it, and makes the result of the server's answer. It completes every transaction exactly once.
///
/// - An unknown module is `moduleNotFound`, and a kind of another executor is `invlaidTransaction`.
/// - A payload that JSON cannot express, an answer that cannot be read, and an executor or service that is released
///   before the answer are `parsingFailed`.
/// - A refusal is the server's error. `AddEditRecordTransactionHandler::handleError` decides afterwards what becomes of
///   the transaction. A file that cannot be read is a refusal that stays.
/// - A request that got no answer is `TransactionResult::noAnswer`.
class RecordTransactionExecutor : public TransactionExecutor {
public:
    void execute(const NTransaction& transaction, Completion onCompletion) final;

protected:
    using Kinds = std::vector<NTransaction::Kind>;
    using Executed = std::shared_ptr<const ExecutedTransaction>;

    RecordTransactionExecutor(ExecutionParts parts, Kinds kinds);

    /// Sends the transaction with `finish`, or finishes it at once.
    virtual void send(Executed executed, Completion finish) = 0;
    /// Makes the result of an accepted change. Runs on a background queue, outside of a database transaction.
    virtual TransactionResult accepted(const Executed& executed, const ChangeAnswer& answer);
    /// Returns whether `handleError` is called for refused transactions.
    virtual bool isMergedAfterRefusal() const { return true; }

    /// Returns a completion that makes the result of the server's answer, away from the network queue.
    ChangeCompletion whenAnswered(Executed executed, Completion finish);
    TransactionResult resultOf(const Executed& executed, const ChangeAnswer& answer);
    /// Gives a new record the server's id, inside the transaction that stores the answer. `RecordChangedObserver` is
    /// notified after its commit.
    bool replaceId(const Executed& executed, const std::string& newId) const;
    /// Returns {"data": [payload]} as a request to add or edit a record; nullopt if JSON cannot express it.
    static std::optional<AddEditRecordRequest> requestOf(const ExecutedTransaction& executed,
                                                         AddRecordNetworkServiceOperation operation);
    static ValueMap parametersOf(const Module& module);

    const ExecutionParts parts_;
    const RecordIdReplacement replacement_;
    const std::shared_ptr<DispatchQueue> answerQueue_ = DispatchQueue::serial("com.tarvo.txn.answers");

private:
    TransactionResult afterRefusal(const Executed& executed, const ErrorResponse& refusal);

    const Kinds kinds_;
};

}  // namespace tarvo
