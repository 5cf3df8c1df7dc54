#pragma once

#include "tarvobase/storage/EnsuredTable.h"
#include "tarvobase/value_objects/transaction/RecordOrder.h"
#include "tarvobase/value_objects/transaction/TransactionPersistence.h"

namespace tarvo {

/// The tables of the current queue: its transactions, and what each waits for. All organisations share them.
class NTransactionInDatabase final : public TransactionPersistence {
public:
    using TransactionPersistence::getTransactionsWithRecordIds;
    using TransactionPersistence::setStatus;

    /// The adapter may be null. With an organisation, what was made in another one is not runnable. With the table of
    /// its older queue, neither is what comes after a change in there; see `RecordOrder`.
    explicit NTransactionInDatabase(std::shared_ptr<DatabaseAdapter> databaseAdapter,
                                    std::optional<std::string> organisation = std::nullopt,
                                    const std::string& olderTable = {});

    bool storeTransactions(const std::vector<NTransaction>& transactions, const Dependencies& dependencies) override;
    Transactions getTransactionsWithIds(const Ids& ids) override;
    Transactions getTransactionsWithRecordIds(const RecordIds& recordIds, const std::optional<Kinds>& kinds,
                                              std::optional<std::int64_t> limit) override;
    std::optional<Ids> getTransactionIdsWithRecordIds(const RecordIds& recordIds, const Kinds& kinds) override;
    std::optional<Ids> getTransactionIdsWithStatus(const std::vector<NTransaction::Status::Case>& cases) override;
    std::optional<QueuedNTransactions> getTransactionsOfRecords(const RecordIds& recordIds,
                                                                const Kinds& kinds) override;
    Transactions getTransactionsNaming(const std::string& recordId) override;
    std::optional<std::map<std::int64_t, std::string>> getPayload(const Ids& ids, const RecordIds& recordIds) override;
    bool deleteTransactionWithIds(const Ids& ids) override;
    bool deleteTransactionWithRecordId(const std::string& recordId) override;
    bool clearError(const Ids& ids) override;
    bool setTransactionErrors(const std::map<std::int64_t, ErrorResponse>& errors) override;
    bool setSyncAttempt(std::int64_t syncAttempt, NTransaction::Status status, std::int64_t id) override;
    bool setStatus(NTransaction::Status status, const Ids& ids) override;
    bool replaceStatus(const std::vector<NTransaction::Status::Case>& former, NTransaction::Status status) override;
    bool update(const std::map<std::string, std::string>& recordIds,
                const std::map<std::int64_t, std::string>& payloads) override;
    Found getNextRunnableTransaction(const Kinds& kinds) override;
    bool addMergedTransaction(const NTransaction& transaction, const Dependencies& dependencies,
                              const Ids& merged) override;
    Transactions getLastTransaction(const std::string& recordId, const Kinds& kinds) override;
    /// Does the same, and returns only the ids. Returns nullopt if the queue cannot be read.
    std::optional<std::map<NTransaction::Kind, std::int64_t>> getLastTransactionId(const std::string& recordId,
                                                                                   const Kinds& kinds);
    bool prepare() override;
    std::optional<QueuedNTransactions> getTransactions() override;
    std::optional<std::int64_t> highestTransactionId() override;

private:
    std::optional<Rows> fetch(const Query& query) const;
    std::optional<Ids> idsWhere(Criteria criteria) const;
    std::string joinOfOtherOrganisations() const;
    std::optional<Rows> lastRows(const std::string& columns, const std::string& recordId, const Kinds& kinds) const;
    std::optional<std::int64_t> highest(const Query& query) const;
    bool execute(const std::vector<DatabaseAdapter::Statement>& statements) const;

    const std::shared_ptr<DatabaseAdapter> adapter_;
    const std::optional<std::string> organisation_;
    const RecordOrder order_;
    const EnsuredTable transactions_, dependencies_;
};

}  // namespace tarvo
