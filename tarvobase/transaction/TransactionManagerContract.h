#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/Object.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/value_objects/transaction/NTransaction.h"
#include "tarvobase/value_objects/transaction/TransactionDependency.h"

namespace tarvo {

/// Makes the ids of transactions.
class TransactionIdGenerator : public virtual platform::Object {
public:
    /// Returns an id above all that it has returned and above all that are stored.
    virtual std::int64_t getNewTransactionId() = 0;
    /// Begins again. Call it only when no transaction is left.
    virtual void resetTransactionId() = 0;
};

/// The current queue of changes without its knowledge of lookups. Operations that write return whether all of it was
/// stored. Each is one commit, or joins the transaction of the database around it; schedulers wake after the outermost
/// commit. Any thread may use it; each call blocks its caller.
class TransactionManagerAbstractContract : public virtual TransactionIdGenerator, public virtual NewRecordIdGenerator {
public:
    using Ids = std::vector<std::int64_t>;
    using Dependencies = std::vector<TransactionDependency>;

    /// Switch sending on and off. What is on its way finishes.
    virtual void startSync() = 0;
    virtual void stopSync() = 0;
    /// Makes ready what the end of an earlier process left on its way or held back. Call it when work on an account
    /// starts.
    virtual bool initialize() = 0;

    bool addTransaction(const NTransaction& transaction, const Dependencies& dependencies) {
        return addTransactions({transaction}, dependencies);
    }
    /// Queues new transactions. One that is held back for the same record is released.
    virtual bool addTransactions(const std::vector<NTransaction>& transactions, const Dependencies& dependencies) = 0;
    /// Stores the survivor of a merge in place of the merged transactions, and resets it.
    virtual bool addMergedTransaction(const NTransaction& transaction, const Dependencies& dependencies,
                                      const Ids& mergedTransactions) = 0;

    /// Release transactions that are held back.
    virtual bool activateAllInactiveTransactions() = 0;
    virtual bool activateTransactionWithId(std::int64_t id) = 0;

    /// Delete transactions, which frees those that wait for them.
    bool deleteTransactionWithId(std::int64_t id) { return deleteTransactionWithIds({id}); }
    virtual bool deleteTransactionWithIds(const Ids& ids) = 0;
    virtual bool deleteTransactionWithRecordId(const std::string& recordId) = 0;

    /// Replaces ids of records, former to new, in the transactions of these records and in those that wait for the
    /// transaction. An empty map changes nothing.
    virtual bool replaceRecordIdentifiers(const std::map<std::string, std::string>& identifiers,
                                          std::int64_t transactionId) = 0;
    /// Gives a transaction all its attempts again and clears the errors of those that wait for it. Its own error stays.
    virtual bool resetTransaction(std::int64_t transactionId) = 0;
    /// Sets the error of a transaction, and marks all that wait for it.
    virtual bool updateError(std::int64_t transactionId, const ErrorResponse& errorResponse) = 0;
};

/// The current queue of changes. A transaction that names a record under a temporary id waits for the one that creates
/// the record.
class TransactionManagerContract : public virtual TransactionManagerAbstractContract {
public:
    using RecordIds = std::vector<std::string>;
    using Kinds = std::vector<NTransaction::Kind>;
    /// Is nullopt if the queue cannot be read.
    using Transactions = std::optional<std::vector<NTransaction>>;

    using TransactionManagerAbstractContract::addMergedTransaction;
    using TransactionManagerAbstractContract::addTransaction;

    /// Queues a transaction that names these records.
    virtual bool addTransaction(const NTransaction& transaction, const RecordIds& lookupRecords,
                                const Dependencies& dependencies) = 0;
    virtual bool addMergedTransaction(const NTransaction& transaction, const RecordIds& lookupRecords,
                                      const Ids& mergedTransactions) = 0;
    /// Returns whether a record's transactions are exactly one of each of these kinds, and no transaction of another
    /// record waits for one of them: then they cancel out. Returns nullopt if the queue cannot be read.
    virtual std::optional<bool> isCreateAndDestoryTransaction(const std::string& recordId, NTransaction::Kind create,
                                                              NTransaction::Kind destroy) = 0;
    /// Returns the transactions of a record, oldest first.
    virtual Transactions getTransactions(const std::string& recordId, const std::optional<Kinds>& kinds,
                                         std::optional<std::int64_t> limit) = 0;
    /// Returns the newest transaction of a record per kind.
    virtual Transactions getLastTransaction(const std::string& recordId, const Kinds& kinds) = 0;
};

}  // namespace tarvo
