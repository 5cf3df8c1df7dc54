#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/DispatchQueue.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/transaction/InactiveTransaction.h"
#include "tarvobase/transaction/RecordIds.h"
#include "tarvobase/transaction/TransactionIds.h"
#include "tarvobase/transaction/TransactionManagerContract.h"
#include "tarvobase/transaction/TransactionWaiters.h"

namespace tarvo {

/// The rows of the current queue: what adds them, merges them, holds them back and takes them out. What sends them
/// stands above it; see `TransactionManagerAbstract`, which also tells the life of a transaction.
class TransactionQueue : public virtual TransactionManagerAbstractContract {
public:
    /// The settings keep the counters.
    TransactionQueue(const Stores& stores, std::shared_ptr<UserDefaultsProtocol> userDefaults);
    ~TransactionQueue() override;

    std::int64_t getNewTransactionId() override { return transactionIds_.getNewTransactionId(); }
    void resetTransactionId() override { transactionIds_.resetTransactionId(); }
    /// Returns "NEW_" and nine digits.
    std::string getNewRecordId() override;
    void resetRecordId() override { recordIds_.resetRecordId(); }

    using TransactionManagerAbstractContract::addMergedTransaction;
    bool addTransactions(const std::vector<NTransaction>& transactions, const Dependencies& dependencies) override;
    bool addMergedTransaction(const NTransaction& transaction, const Dependencies& dependencies,
                              const Ids& mergedTransactions, Attempts attempts) override;
    bool activateAllInactiveTransactions() override;
    bool activateTransactionWithId(std::int64_t id) override;
    bool deleteTransactionWithIds(const Ids& ids) override;
    bool deleteTransactionWithRecordId(const std::string& recordId) override;
    bool replaceRecordIdentifiers(const Identifiers& identifiers, std::int64_t transactionId) override;
    bool resetTransaction(std::int64_t id) override;
    bool updateError(std::int64_t id, const ErrorResponse& error) override;

    // The assembler sets these before the first use.

    /// Called in the commit in which an edit is accepted or becomes a part of an add: edits of the older queue that
    /// were made before it must not undo it. Returns false if the database refuses.
    std::function<bool(const NTransaction& edit, std::int64_t number)> editSettled;
    /// Tells whether something outside the database is kept under a new id, which then must not be used.
    std::function<bool(const std::string& recordId)> isRecordIdTaken;

protected:
    /// Runs `steps` as one transaction of the database.
    bool inOneCommit(std::string_view name, platform::FunctionRef<bool()> steps);

    /// Returns whether a transaction is on its way from here.
    virtual bool isBeingSent(std::int64_t id) const = 0;
    /// Lets both schedulers look for something to send.
    virtual void runSchedulers() = 0;
    /// Does the same, and ends a wait for the server.
    virtual void wake() = 0;

    static std::vector<std::string> textsOf(const Ids& ids);
    bool takeOut(const std::vector<NTransaction>& transactions);
    bool endInRegister(const std::vector<NTransaction>& transactions, ChangeOutcome outcome);
    bool reset(std::int64_t id, std::int64_t syncAttempt);
    void forgetTimers() { inactiveTransactionTracker_.removeAll(); }

    const Stores stores_;
    const std::shared_ptr<TransactionPersistence> txnPersistence_;
    const std::shared_ptr<TransactionDependencyPersistence> txnDependencyPersistence_;

private:
    void hold(const NTransaction& transaction);
    bool activate(const Ids& ids);
    bool canBeMerged(const Ids& ids, const NTransaction& survivor);
    bool settleEdits(const NTransaction& survivor, const std::vector<NTransaction>& folded);
    bool keepNumberOfAdd(const NTransaction& survivor, const std::vector<NTransaction>& merged);

    TransactionIds transactionIds_;
    const TransactionWaiters waiters_;
    RecordIds recordIds_;
    InactiveTransaction inactiveTransactionTracker_;
    const std::shared_ptr<DispatchQueue> timerQueue_ = DispatchQueue::serial("com.tarvo.txn.timer");
};

}  // namespace tarvo
