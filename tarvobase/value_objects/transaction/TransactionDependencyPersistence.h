#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/Object.h"
#include "tarvobase/value_objects/transaction/TransactionDependency.h"

namespace tarvo {

/// The store of what transactions of the current queue wait for. Writes return whether they were stored, and join the
/// transaction of the database around them; the table is made with the first write if there is none. Any thread may use
/// it; each call blocks its caller.
class TransactionDependencyPersistence : public virtual platform::Object {
public:
    using Ids = std::vector<std::int64_t>;
    using Kinds = std::vector<TransactionDependency::Kind>;
    /// Is nullopt if the table cannot be read. Rows that cannot be read are left out and logged.
    using Dependencies = std::optional<std::vector<TransactionDependency>>;

    /// Stores a dependency. One that is stored already counts as stored.
    bool storeTransactionDependency(const TransactionDependency& dependency) {
        return storeTransactionDependencies({dependency});
    }
    virtual bool storeTransactionDependencies(const std::vector<TransactionDependency>& dependencies) = 0;
    /// Frees the transactions that wait for this one.
    virtual bool deleteTransactionDependency(std::int64_t transactionId) = 0;
    /// Returns what waits for these transactions, in these ways.
    virtual Dependencies getTransactionDependencies(const Ids& dependentOn, const Kinds& kinds) = 0;
    /// Returns the dependencies, direct and indirect, of all that waits for a transaction through a lookup. A cycle
    /// ends where it began, so that the transaction itself may be among those that wait.
    virtual Dependencies getAllTransitivesLookupDependencies(std::int64_t transactionId) = 0;

    /// Returns all dependencies.
    virtual Dependencies getTransactionDependencies() = 0;
    virtual bool removeTransactionDependencies(const std::vector<TransactionDependency>& dependencies) = 0;
    /// Removes dependencies of or on transactions that neither the current queue nor this list has, whatever their
    /// kind: nobody would ever free who waits there. Returns the ids that waited, each once, or nullopt if nothing
    /// could be stored.
    virtual std::optional<Ids> removeDanglingDependencies(const Ids& alsoPresent) = 0;
};

}  // namespace tarvo
