#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>

#include "tarvobase/metadata/Stores.h"
#include "tarvobase/transaction/IdCounter.h"
#include "tarvobase/transaction/TransactionManagerContract.h"

namespace tarvo {

/// The ids of transactions, which are one sequence for both queues: an add of the older queue has one too. Any thread
/// may use it; each call blocks its caller.
class TransactionIds final : public TransactionIdGenerator {
public:
    /// The settings keep the counter.
    explicit TransactionIds(const Stores& stores)
        : stores_(stores), counter_("lastTransactionId", stores.userDefaults) {}
    std::int64_t getNewTransactionId() override {
        auto stored = stores_.currentTransactions()->highestTransactionId().value_or(0);
        auto given = stores_.changeRegister()->highestTransactionNumber().value_or(0);
        return counter_.next(std::max(stored, given));
    }
    void resetTransactionId() override { counter_.reset(); }

private:
    const Stores stores_;
    IdCounter counter_;
};

}  // namespace tarvo
