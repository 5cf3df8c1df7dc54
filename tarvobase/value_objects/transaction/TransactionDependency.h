#pragma once

#include <cstdint>

#include "tarvobase/storage/Mapper.h"

namespace tarvo {

struct TransactionDependency;

struct TransactionDependencyMapper : StoredMapper<TransactionDependencyMapper, TransactionDependency> {
    std::string_view tableName = of("TransactionDependency", "TRANSACTIONS_DEPENDENCY");
    std::string_view transactionId = of("transactionId", "txn_id");
    std::string_view dependentTransaction = of("dependentTransaction", "dependent_txn");
    std::string_view type = of("type");
};
struct TransactionDependencyDBMapper : TableTwin<TransactionDependencyMapper> {};

/// Says that a transaction of the current queue waits for another one. It waits as long as the dependency is stored,
/// whatever the state of the other one.
struct TransactionDependency {
    /// The raw values are stored.
    enum class Kind {
        lookupRecord = 0,  ///< the payload names a record that the other transaction still has to create
        sameRecord = 1
    };

    std::int64_t transactionId = 0;         ///< the transaction that waits
    std::int64_t dependentTransaction = 0;  ///< the transaction that it waits for
    Kind kind = Kind::lookupRecord;

    static constexpr auto fields() {
        using V = TransactionDependency;
        using Names = TransactionDependencyMapper;
        return describe(fieldBy<IntegerCodec<std::int64_t>>("transactionId", &V::transactionId, &Names::transactionId),
                        fieldBy<IntegerCodec<std::int64_t>>("dependentTransaction", &V::dependentTransaction,
                                                            &Names::dependentTransaction),
                        fieldBy<IntegerCodec<Kind>>("kind", &V::kind, &Names::type));
    }
    friend bool operator==(const TransactionDependency&, const TransactionDependency&) = default;
};

template <>
struct EnumCases<TransactionDependency::Kind> {
    using K = TransactionDependency::Kind;
    static constexpr EnumCase<K> cases[] = {{K::lookupRecord, "lookupRecord"}, {K::sameRecord, "sameRecord"}};
};

}  // namespace tarvo
