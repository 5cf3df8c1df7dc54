#include "tarvobase/transaction/TransactionIds.h"

#include <algorithm>

namespace tarvo {

std::int64_t TransactionIds::getNewTransactionId() {
    auto stored = stores_.currentTransactions()->highestTransactionId().value_or(0);
    auto given = stores_.changeRegister()->highestTransactionNumber().value_or(0);
    return counter_.next(std::max(stored, given));
}

}  // namespace tarvo
