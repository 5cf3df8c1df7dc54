#pragma once

#include "tarvobase/storage/EnsuredTable.h"
#include "tarvobase/value_objects/transaction/TransactionPersistanceDelegate.h"

namespace tarvo {

/// The table of the older queue of changes, one per organisation.
class TransactionInDatabase final : public TransactionPersistanceDelegate {
public:
    /// Takes the table's name with the organisation (`Scope::tableName`). The adapter may be null.
    TransactionInDatabase(const std::string& tableName, std::shared_ptr<DatabaseAdapter> databaseAdapter);

    bool storeTransaction(const Transaction& transaction) override { return storeTransactions({transaction}); }
    bool storeTransactions(const std::vector<Transaction>& transactions) override;
    bool removeTransaction(const std::string& transactionID) override;
    bool removeTransactions(const std::string& recordID) override;
    bool removeTransactionsWithIds(const std::vector<std::string>& transactionIDs) override;
    Found getNextRunnableTransaction() override;
    Queued getTransactionsWithParentID(const std::string& transactionID) override;
    bool updateTransaciton(const std::string& transactionID, const std::optional<std::string>& error,
                           const std::optional<std::string>& serverResponse,
                           const std::optional<std::string>& extras) override;
    Found getTransaction(const std::string& transactionID) override;
    Queued getTransactions() override;
    Queued getTransactions(const std::string& recordID) override;
    Queued getTransactionsOfRecords(const std::vector<std::string>& recordIDs) override;
    Queued getTransactionsWithIds(const std::vector<std::string>& transactionIDs) override;
    bool markSending(const std::vector<std::string>& transactionIDs) override;
    bool makeReady(const std::vector<std::string>& transactionIDs) override;
    bool failUnreadable(const std::vector<std::int64_t>& rows) override;
    std::optional<std::int64_t> highestTransactionTime() override;
    bool prepare() override;

private:
    FetchQuery inOrder() const;
    Queued queued(const FetchQuery& query) const;

    EnsuredTable table_;
};

}  // namespace tarvo
