#pragma once

#include <functional>
#include <map>
#include <memory>

#include "platform/ThreadSafety.h"
#include "tarvobase/transaction/TransactionExecutor.h"
#include "tarvobase/transaction/TransactionManagerContract.h"

namespace tarvo {

/// Makes the executor of each kind when it is needed first. Any thread may use it.
class TransactionExecutorDI final : public TransactionExecutorDIContract {
public:
    using Make = std::function<std::shared_ptr<TransactionExecutor>()>;

    /// Serves kinds by what `make` returns. Call it before the first use.
    void serve(const std::vector<NTransaction::Kind>& kinds, Make make);
    /// Returns the executor of the kind, or one that fails with `invlaidTransaction` if nothing sends that kind yet.
    std::shared_ptr<TransactionExecutor> getExecutor(const NTransaction& transaction) override;

private:
    struct Served {
        Make make;
        std::shared_ptr<TransactionExecutor> executor;
    };
    platform::Mutex mutex_;
    std::map<NTransaction::Kind, std::shared_ptr<Served>> served_ TARVO_GUARDED_BY(mutex_);
};

}  // namespace tarvo
