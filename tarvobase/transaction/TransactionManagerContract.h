#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/Object.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/value_objects/transaction/ErrorResponse.h"
#include "tarvobase/value_objects/transaction/NTransaction.h"
#include "tarvobase/value_objects/transaction/RecordDependency.h"
#include "tarvobase/value_objects/transaction/TransactionDependency.h"

namespace tarvo {

/// Generates the ids of transactions.
class TransactionIdGenerator : public virtual platform::Object {
public:
    /// Returns a number above all that were returned before, and above all that are stored.
    virtual std::int64_t getNewTransactionId() = 0;
    /// Begins again above what is stored.
    virtual void resetTransactionId() = 0;
};

/// The current queue of changes without the knowledge of lookups. Operations that write return whether everything that
/// they say is stored; each is one transaction of the database, or a part of the one around it. Wake-ups and notices
/// come after the commit. Any thread may use it; each call blocks its caller for the database.
class TransactionManagerAbstractContract : public virtual TransactionIdGenerator, public virtual NewRecordIdGenerator {
public:
    using Ids = std::vector<std::int64_t>;
    using Dependencies = std::vector<TransactionDependency>;
    /// The server's ids of records by their temporary ids.
    using Identifiers = std::map<std::string, std::string>;
    /// Whether the survivor of a merge may be started as often as a new transaction. After a refusal it may not: it
    /// would be sent in an endless loop.
    enum class Attempts { beginAgain, keep };

    virtual void startSync() = 0;
    virtual void stopSync() = 0;
    /// Makes the transactions ready again that an ended process was sending, or held back. Call it when work on an
    /// account begins. What this process has on its way stays.
    virtual bool initialize() = 0;

    bool addTransaction(const NTransaction& transaction, const Dependencies& dependencies) {
        return addTransactions({transaction}, dependencies);
    }
    /// Stores transactions with what they wait for. Held-back transactions of the same records become ready.
    virtual bool addTransactions(const std::vector<NTransaction>& transactions, const Dependencies& dependencies) = 0;
    /// Stores the survivor of a merge in place of the others. Returns false, and stores nothing, if one of them is
    /// being sent, or may have reached the server: that one can only be repeated as it is.
    virtual bool addMergedTransaction(const NTransaction& transaction, const Dependencies& dependencies,
                                      const Ids& mergedTransactions, Attempts attempts = Attempts::beginAgain) = 0;

    virtual bool activateAllInactiveTransactions() = 0;
    virtual bool activateTransactionWithId(std::int64_t id) = 0;
    bool deleteTransactionWithId(std::int64_t id) { return deleteTransactionWithIds({id}); }
    /// Takes transactions out of the queue, which frees those that waited for them.
    virtual bool deleteTransactionWithIds(const Ids& ids) = 0;
    virtual bool deleteTransactionWithRecordId(const std::string& recordId) = 0;
    /// Gives the records of a finished transaction their ids in the rest of the queue.
    virtual bool replaceRecordIdentifiers(const Identifiers& identifiers, std::int64_t transactionId) = 0;
    /// Lets a transaction be sent again as if it had never been started, and takes back the errors of those that failed
    /// for its sake. Its own error stays.
    virtual bool resetTransaction(std::int64_t id) = 0;
    /// Keeps why a transaction failed. What waits for it through lookups fails with it.
    virtual bool updateError(std::int64_t id, const ErrorResponse& error) = 0;
};

/// The current queue of changes with the knowledge of lookups: a transaction that names a record which is still to be
/// created waits for its creation.
class TransactionManagerContract : public virtual TransactionManagerAbstractContract {
public:
    using RecordIds = std::vector<std::string>;
    using Kinds = std::vector<NTransaction::Kind>;
    using Transactions = std::optional<std::vector<NTransaction>>;

    using TransactionManagerAbstractContract::addMergedTransaction;
    using TransactionManagerAbstractContract::addTransaction;
    virtual bool addTransaction(const NTransaction& transaction, const RecordIds& lookupRecords,
                                const Dependencies& dependencies) = 0;
    virtual bool addMergedTransaction(const NTransaction& transaction, const RecordIds& lookupRecords,
                                      const Ids& mergedTransactions, Attempts attempts = Attempts::beginAgain) = 0;
    /// Returns whether a record has exactly two transactions, which create and destroy it, and no transaction of
    /// another record waits for them: then they cancel out. Returns nullopt if the queue cannot be read.
    virtual std::optional<bool> isCreateAndDestoryTransaction(const std::string& recordId, NTransaction::Kind create,
                                                              NTransaction::Kind destroy) = 0;
    /// Returns the transactions of a record, the oldest first, or nullopt if the queue cannot be read.
    virtual Transactions getTransactions(const std::string& recordId, const std::optional<Kinds>& kinds,
                                         std::optional<std::int64_t> limit) = 0;
    /// Returns the newest transaction of a record per kind, or nullopt if the queue cannot be read.
    virtual Transactions getLastTransaction(const std::string& recordId, const Kinds& kinds) = 0;
};

}  // namespace tarvo
