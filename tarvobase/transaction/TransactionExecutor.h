#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "platform/Object.h"
#include "platform/Result.h"
#include "tarvobase/value_objects/transaction/NTransaction.h"

namespace tarvo {

/// Runs one transaction at a time for a scheduler.
class TransactionRunner : public virtual platform::Object {
public:
    /// Calls back once, on any thread, when the result of the transaction is recorded.
    virtual void run(const NTransaction& transaction, std::function<void()> onCompletion) = 0;
};

/// Sends transactions of some kinds.
class TransactionExecutor : public virtual platform::Object {
public:
    /// Former to new ids of the records that the server created, possibly none, or why the transaction failed.
    using Outcome = Result<std::map<std::string, std::string>, ErrorResponse>;
    using Completion = std::function<void(Outcome)>;

    /// Calls back exactly once, on any thread.
    virtual void execute(const NTransaction& transaction, Completion onCompletion) = 0;
};

/// Knows who sends which kind.
class TransactionExecutorDIContract : public virtual platform::Object {
public:
    /// Never returns null.
    virtual std::shared_ptr<TransactionExecutor> getExecutor(const NTransaction& transaction) = 0;
};

}  // namespace tarvo
