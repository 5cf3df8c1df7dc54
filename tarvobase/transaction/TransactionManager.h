#pragma once

#include <string>
#include <vector>

#include "tarvobase/transaction/TransactionManagerAbstract.h"

namespace tarvo {

/// The current queue of changes of an account, organisation and database.
class TransactionManager final : public TransactionManagerContract, public TransactionManagerAbstract {
public:
    using Ids = TransactionManagerContract::Ids;
    using TransactionManagerAbstract::addMergedTransaction;
    using TransactionManagerAbstract::TransactionManagerAbstract;
    using TransactionManagerContract::addTransaction;

    bool addTransaction(const NTransaction& transaction, const RecordIds& lookupRecords,
                        const Dependencies& dependencies) override;
    bool addMergedTransaction(const NTransaction& transaction, const RecordIds& lookupRecords,
                              const Ids& mergedTransactions, Attempts attempts) override;
    std::optional<bool> isCreateAndDestoryTransaction(const std::string& recordId, NTransaction::Kind create,
                                                      NTransaction::Kind destroy) override;
    Transactions getTransactions(const std::string& recordId, const std::optional<Kinds>& kinds,
                                 std::optional<std::int64_t> limit) override;
    Transactions getLastTransaction(const std::string& recordId, const Kinds& kinds) override;

private:
    std::optional<NTransaction> withAliases(const NTransaction& transaction);
    std::optional<Ids> numbersOfOlderAdds(const std::string& recordId);
    std::optional<Dependencies> getLookupDependenceis(std::int64_t transactionId, const RecordIds& records);

    const Kinds createTransactionKinds_ = kindsWhere(createsRecord);
};

}  // namespace tarvo
