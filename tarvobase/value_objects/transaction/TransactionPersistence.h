#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/Object.h"
#include "tarvobase/network_layer/ParserError.h"
#include "tarvobase/value_objects/transaction/NTransaction.h"
#include "tarvobase/value_objects/transaction/TransactionDependency.h"

namespace tarvo {

/// A row of the current queue that cannot be read as an `NTransaction`.
struct UnreadableNTransaction {
    std::int64_t id = 0;
    std::string recordId;   ///< empty if the row has none
    std::string column;     ///< the first column that is absent or does not hold what it should
    bool hasError = false;  ///< whether the row has the text of an error, so that it does not count as runnable
    friend bool operator==(const UnreadableNTransaction&, const UnreadableNTransaction&) = default;
};

/// Rows of the current queue in the order of their ids.
struct QueuedNTransactions {
    std::vector<NTransaction> transactions;
    std::vector<UnreadableNTransaction> unreadable;
};

/// The store of the current queue of changes. Writes return whether they were stored, and join the transaction of the
/// database around them; one of no row that exists is stored. Rows are read in the order of their ids. A store makes
/// the tables that the database lacks. Any thread may use it; each call blocks its caller.
class TransactionPersistence : public virtual platform::Object {
public:
    using Ids = std::vector<std::int64_t>;
    using RecordIds = std::vector<std::string>;
    using Kinds = std::vector<NTransaction::Kind>;
    using Dependencies = std::vector<TransactionDependency>;
    /// Is nullopt if the queue cannot be read, or one of the rows cannot.
    using Transactions = std::optional<std::vector<NTransaction>>;
    /// Fails with `noData` if the queue cannot be read.
    using Found = Result<std::optional<NTransaction>, ParserError>;

    /// Stores new transactions and their dependencies, all or none. An id that is stored already is refused, and so is
    /// a transaction that could not be read back.
    virtual bool storeTransactions(const std::vector<NTransaction>& transactions, const Dependencies& dependencies) = 0;

    virtual Transactions getTransactionsWithIds(const Ids& ids) = 0;
    /// Returns the transactions of records, of these kinds if there are kinds, and no more than `limit` of them.
    virtual Transactions getTransactionsWithRecordIds(const RecordIds& recordIds, const std::optional<Kinds>& kinds,
                                                      std::optional<std::int64_t> limit) = 0;
    Transactions getTransactionsWithRecordIds(const RecordIds& recordIds) {
        return getTransactionsWithRecordIds(recordIds, std::nullopt, std::nullopt);
    }
    /// Returns the ids of transactions of records, of these kinds. It also finds rows that cannot be read otherwise.
    /// Returns nullopt if the queue cannot be read.
    virtual std::optional<Ids> getTransactionIdsWithRecordIds(const RecordIds& recordIds, const Kinds& kinds) = 0;
    /// Returns the ids of transactions that have one of these, or nullopt if the queue cannot be read.
    virtual std::optional<Ids> getTransactionIdsWithStatus(const std::vector<NTransaction::Status::Case>& cases) = 0;
    /// Returns the transactions of records, of these kinds, whether all of the rows can be read or not. Returns nullopt
    /// if the queue cannot be read.
    virtual std::optional<QueuedNTransactions> getTransactionsOfRecords(const RecordIds& recordIds,
                                                                        const Kinds& kinds) = 0;
    /// Returns the transactions of other records whose payload has this text anywhere, so that their records may name
    /// the id that it is. Returns nullopt if the queue cannot be read, or one of the rows cannot.
    virtual Transactions getTransactionsNaming(const std::string& recordId) = 0;
    /// Returns the payloads, as JSON text, of the transactions with these ids or of these records. Rows without a
    /// payload are left out. Returns nullopt if the queue cannot be read.
    virtual std::optional<std::map<std::int64_t, std::string>> getPayload(const Ids& ids,
                                                                          const RecordIds& recordIds) = 0;

    /// Deletes transactions with all dependencies on both sides, which frees those that waited for them.
    virtual bool deleteTransactionWithIds(const Ids& ids) = 0;
    bool deleteTransactionWithId(std::int64_t id) { return deleteTransactionWithIds({id}); }
    /// Does the same for all transactions of a record.
    virtual bool deleteTransactionWithRecordId(const std::string& recordId) = 0;

    virtual bool clearError(const Ids& ids) = 0;
    /// Sets the errors of transactions, all or none.
    virtual bool setTransactionErrors(const std::map<std::int64_t, ErrorResponse>& errors) = 0;
    virtual bool setSyncAttempt(std::int64_t syncAttempt, NTransaction::Status status, std::int64_t id) = 0;
    virtual bool setStatus(NTransaction::Status status, const Ids& ids) = 0;
    bool setStatus(NTransaction::Status status, std::int64_t id) { return setStatus(status, Ids{id}); }
    /// Sets the status of all transactions that have one of these.
    virtual bool replaceStatus(const std::vector<NTransaction::Status::Case>& former, NTransaction::Status status) = 0;
    /// Gives the transactions of records new record ids (former to new), and transactions new payloads (JSON text by
    /// id), all or none.
    virtual bool update(const std::map<std::string, std::string>& recordIds,
                        const std::map<std::int64_t, std::string>& payloads) = 0;

    /// Returns the first transaction of these kinds that waits for no other one, has no error and is active. Rows that
    /// cannot be read are passed over and logged.
    virtual Found getNextRunnableTransaction(const Kinds& kinds) = 0;
    /// Stores the survivor of a merge in place of the transactions `merged`, which may contain its own id: they and
    /// their dependencies go, the survivor gets `dependencies`, and who waited for one of them waits for the survivor.
    virtual bool addMergedTransaction(const NTransaction& transaction, const Dependencies& dependencies,
                                      const Ids& merged) = 0;
    /// Returns the newest transaction of a record per kind.
    virtual Transactions getLastTransaction(const std::string& recordId, const Kinds& kinds) = 0;

    /// Makes the tables and indexes that the database lacks. The queue works without it, but slowly when it is long.
    virtual bool prepare() = 0;
    /// Returns the whole queue, or nullopt if it cannot be read.
    virtual std::optional<QueuedNTransactions> getTransactions() = 0;
    /// Returns the highest id that is stored as that of a transaction or in a dependency, so that a new transaction
    /// gets a higher one even if the counter was lost. Returns 0 if there is none, and nullopt if the queue cannot be
    /// read. An id so high that none could follow does not count.
    virtual std::optional<std::int64_t> highestTransactionId() = 0;
};

}  // namespace tarvo
