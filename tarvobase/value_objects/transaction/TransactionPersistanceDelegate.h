#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/Object.h"
#include "tarvobase/network_layer/ParserError.h"
#include "tarvobase/value_objects/transaction/Transaction.h"

namespace tarvo {

/// A row of the queue that cannot be read as a `Transaction`. It never keeps the others from being read.
struct UnreadableTransaction {
    std::int64_t row = 0;                      ///< what `failUnreadable` takes; a row that is stored again gets another
    std::optional<std::string> transactionID;  ///< absent if the row has none
    std::string column;                        ///< the first column that is absent or does not hold what it should
    std::optional<std::string> extras;
    friend bool operator==(const UnreadableTransaction&, const UnreadableTransaction&) = default;
};

/// Rows of the queue in the order in which they are sent: by their time, and rows of one time as they were stored.
struct QueuedTransactions {
    std::vector<Transaction> transactions;
    std::vector<UnreadableTransaction> unreadable;
};

/// The store of the older queue of changes. Writes return whether they were stored, and join the transaction of the
/// database around them. A store that has no table makes it with its first write: a server that forgot the table must
/// not cost a user a change. Any thread may use it; each call blocks its caller.
class TransactionPersistanceDelegate : public virtual platform::Object {
public:
    /// Fails with `noData` if the queue cannot be read, and with `typeConversionFailedForKey` and the column if the row
    /// cannot.
    using Found = Result<std::optional<Transaction>, ParserError>;
    /// Is nullopt if the queue cannot be read.
    using Queued = std::optional<QueuedTransactions>;

    /// Stores a change, in place of the one with its `transactionID`.
    virtual bool storeTransaction(const Transaction& transaction) = 0;
    virtual bool storeTransactions(const std::vector<Transaction>& transactions) = 0;
    virtual bool removeTransaction(const std::string& transactionID) = 0;
    /// Removes all changes of a record.
    virtual bool removeTransactions(const std::string& recordID) = 0;
    virtual bool removeTransactionsWithIds(const std::vector<std::string>& transactionIDs) = 0;
    /// Returns the first row without a server response, an error message and extras. Rows that cannot be read are
    /// passed over.
    virtual Found getNextRunnableTransaction() = 0;
    /// Returns the rows whose parent record has this id.
    virtual Queued getTransactionsWithParentID(const std::string& transactionID) = 0;
    /// Sets the columns whose argument is present and leaves the others as they are. `makeReady` clears them.
    virtual bool updateTransaciton(const std::string& transactionID, const std::optional<std::string>& error,
                                   const std::optional<std::string>& serverResponse,
                                   const std::optional<std::string>& extras) = 0;

    virtual Found getTransaction(const std::string& transactionID) = 0;
    /// Returns the whole queue, whatever the state of its rows.
    virtual Queued getTransactions() = 0;
    virtual Queued getTransactions(const std::string& recordID) = 0;
    /// Returns the changes of these records, whatever their state.
    virtual Queued getTransactionsOfRecords(const std::vector<std::string>& recordIDs) = 0;
    virtual Queued getTransactionsWithIds(const std::vector<std::string>& transactionIDs) = 0;
    /// Sets `extras` to the text of rows that are being sent.
    virtual bool markSending(const std::vector<std::string>& transactionIDs) = 0;
    /// Clears error message, server response and extras, so that the rows are sent again.
    virtual bool makeReady(const std::vector<std::string>& transactionIDs) = 0;
    /// Marks rows that cannot be read as failed, by their `row`.
    virtual bool failUnreadable(const std::vector<std::int64_t>& rows) = 0;
    /// Returns the highest stored time, so that a change that follows gets a later one even if the clock was set back.
    /// Returns 0 for an empty queue, and nullopt if the queue cannot be read. A time so far away that none could follow
    /// does not count.
    virtual std::optional<std::int64_t> highestTransactionTime() = 0;
    /// Makes the table and the indexes by which the changes of a record and the highest time are found, if they are
    /// missing. Call it when the queue begins to be sent.
    virtual bool prepare() = 0;
};

}  // namespace tarvo
