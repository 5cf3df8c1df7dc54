#pragma once

#include "tarvobase/storage/EnsuredTable.h"
#include "tarvobase/value_objects/transaction/TransactionDependencyPersistence.h"

namespace tarvo {

/// The table of what transactions of the current queue wait for. All organisations share it.
class TransactionDependencyInDatabase final : public TransactionDependencyPersistence {
public:
    /// The adapter may be null.
    explicit TransactionDependencyInDatabase(std::shared_ptr<DatabaseAdapter> databaseAdapter);

    bool storeTransactionDependencies(const std::vector<TransactionDependency>& dependencies) override;
    bool deleteTransactionDependency(std::int64_t transactionId) override;
    Dependencies getTransactionDependencies(const Ids& dependentOn, const Kinds& kinds) override;
    Dependencies getAllTransitivesLookupDependencies(std::int64_t transactionId) override;
    Dependencies getTransactionDependencies() override;
    bool removeTransactionDependencies(const std::vector<TransactionDependency>& dependencies) override;
    std::optional<Ids> removeDanglingDependencies(const Ids& alsoPresent) override;

    /// Returns the table, for statements that use it beside that of the transactions.
    static EnsuredTable tableOf(std::shared_ptr<DatabaseAdapter> databaseAdapter);

private:
    Dependencies dependenciesOf(const std::optional<Rows>& rows) const;

    const std::shared_ptr<DatabaseAdapter> adapter_;
    const EnsuredTable table_;
};

}  // namespace tarvo
