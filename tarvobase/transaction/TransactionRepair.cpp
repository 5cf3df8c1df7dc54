#include "tarvobase/transaction/TransactionRepair.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/Log.h"

namespace tarvo {

namespace {

using DependencyList = std::vector<TransactionDependency>;
using DependencyEnd = std::int64_t TransactionDependency::*;

const TransactionDBMapper rowsOfTransactions;

void logRepair(std::int64_t id, const std::string& what) {
    platform::log(platform::LogLevel::warning, "transactions", "transaction " + std::to_string(id) + " " + what);
}

/// Removes dependencies whose `end` is at no other one's `other` end, until there is none.
void strip(DependencyList& dependencies, DependencyEnd end, DependencyEnd other) {
    std::map<std::int64_t, std::size_t> others;
    std::multimap<std::int64_t, std::size_t> byEnd;
    for (std::size_t i = 0; i < dependencies.size(); ++i) {
        ++others[dependencies[i].*other];
        byEnd.emplace(dependencies[i].*end, i);
    }
    std::set<std::int64_t> free;
    for (auto& each : byEnd)
        if (!others.contains(each.first)) free.insert(each.first);
    std::vector<bool> isGone(dependencies.size());
    while (!free.empty()) {
        auto [first, last] = byEnd.equal_range(*free.begin());
        free.erase(free.begin());
        for (; first != last; ++first) {
            auto next = dependencies[first->second].*other;
            isGone[first->second] = true;
            if (--others[next] == 0) free.insert(next);
        }
    }
    DependencyList left;
    for (std::size_t i = 0; i < dependencies.size(); ++i)
        if (!isGone[i]) left.push_back(dependencies[i]);
    dependencies = std::move(left);
}

/// Returns the dependencies between transactions that wait for each other: those that wait for one that waits for
/// nobody are none, nor are those of one for which nobody waits.
DependencyList cyclesIn(DependencyList dependencies) {
    strip(dependencies, &TransactionDependency::dependentTransaction, &TransactionDependency::transactionId);
    strip(dependencies, &TransactionDependency::transactionId, &TransactionDependency::dependentTransaction);
    return dependencies;
}

}  // namespace

bool TransactionRepair::repair(const QueuedNTransactions& queued) const {
    return failUnreadable(queued.unreadable) && removeDangling() && removeCycles();
}

/// A row with an error is not sent. An error that cannot be read itself gives way.
bool TransactionRepair::failUnreadable(const std::vector<UnreadableNTransaction>& rows) const {
    return std::all_of(rows.begin(), rows.end(), [&](auto& row) {
        if (row.hasError && row.column != rowsOfTransactions.errorResponse) return true;
        logRepair(row.id, "cannot be read: " + row.column);
        return waiters_.fail(row.id, ErrorResponse::parsingFailed());
    });
}

bool TransactionRepair::removeDangling() const {
    auto olderAdds = stores_.changeRegister()->transactionNumbers();
    auto freed = olderAdds ? stores_.transactionDependencies()->removeDanglingDependencies(*olderAdds) : std::nullopt;
    if (!freed) return false;
    for (auto id : *freed) logRepair(id, "waited for one that is gone");
    return true;
}

bool TransactionRepair::removeCycles() const {
    auto dependencies = stores_.transactionDependencies()->getTransactionDependencies();
    if (!dependencies) return false;
    auto cycles = cyclesIn(*std::move(dependencies));
    for (auto& one : cycles)
        logRepair(one.transactionId, "waited for " + std::to_string(one.dependentTransaction) + " in a cycle");
    return stores_.transactionDependencies()->removeTransactionDependencies(cycles);
}

}  // namespace tarvo
