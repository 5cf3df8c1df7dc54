#pragma once

#include "tarvobase/metadata/Stores.h"
#include "tarvobase/transaction/TransactionWaiters.h"

namespace tarvo {

/// Keeps what is broken in the current queue from holding up the rest of it. Everything that it does is logged.
///
/// - A row that cannot be read stays, and fails with `parsingFailed`; what waits for it through lookups fails with it.
/// - Dependencies of or on transactions that are in neither queue are removed, and so are those that form a cycle. What
///   waited so can go; if it names a record that nobody creates, it fails then.
///
/// Operations join the transaction of the database around them, and return whether everything is stored.
class TransactionRepair {
public:
    explicit TransactionRepair(const Stores& stores) : stores_(stores), waiters_(stores) {}

    /// Call it when work on an account begins, with the whole queue.
    bool repair(const QueuedNTransactions& queued) const;

private:
    bool failUnreadable(const std::vector<UnreadableNTransaction>& rows) const;
    bool removeDangling() const;
    bool removeCycles() const;

    const Stores stores_;
    const TransactionWaiters waiters_;
};

}  // namespace tarvo
