#include "tarvobase/change_queues/TransactionExecutorDI.h"

#include <utility>

#include "platform/Log.h"

namespace tarvo {

void TransactionExecutorDI::serve(const std::vector<NTransaction::Kind>& kinds, Make make) {
    auto served = std::make_shared<Served>(Served{std::move(make), nullptr});
    platform::MutexLock lock(mutex_);
    for (auto kind : kinds) served_[kind] = served;
}

std::shared_ptr<TransactionExecutor> TransactionExecutorDI::getExecutor(const NTransaction& transaction) {
    platform::MutexLock lock(mutex_);
    auto found = served_.find(transaction.kind);
    if (found == served_.end()) {
        platform::log(platform::LogLevel::warning, "transactions",
                      "-unhaled transaction type: " + std::string(caseName(transaction.kind)));
        return std::make_shared<InvalidTransactionExecutor>();
    }
    auto& served = *found->second;
    if (!served.executor) served.executor = served.make();
    return served.executor;
}

}  // namespace tarvo
