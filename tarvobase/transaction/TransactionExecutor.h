#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/Object.h"
#include "platform/Result.h"
#include "tarvobase/transaction/SendingLock.h"
#include "tarvobase/value_objects/transaction/ErrorResponse.h"
#include "tarvobase/value_objects/transaction/NTransaction.h"

namespace tarvo {

/// What came of a transaction that was sent.
struct TransactionResult {
    /// The server's ids of records by their temporary ids.
    using Identifiers = std::map<std::string, std::string>;

    /// The ids, possibly none, or why the transaction failed.
    Result<Identifiers, ErrorResponse> outcome;
    /// Stores the executor's rows in the commit that takes the transaction out of the queue, or that keeps its failure.
    /// Returns whether they are stored; otherwise all of the result is undone, and the transaction is sent again.
    std::function<bool()> store{};
    /// Runs after that commit and after the scheduler has gone on, also after a failure.
    std::function<void()> afterwards{};
    /// Present if the server has not decided: the transaction is sent again when the server may be back. The text says
    /// what happened, without values of records.
    std::optional<std::string> silence{};
    /// Whether the server may have applied a transaction that was refused: it was sent before, and this time the
    /// request failed as a whole.
    bool mayBeApplied = false;
    /// Whether the server cannot have the transaction from this send, which got no answer.
    bool isUnsent = false;
    /// The text of `silence` when there was no token.
    static constexpr const char* notSignedIn = "notSignedIn";

    static TransactionResult success(Identifiers identifiers, std::function<bool()> store = {},
                                     std::function<void()> afterwards = {}) {
        return {.outcome = std::move(identifiers), .store = std::move(store), .afterwards = std::move(afterwards)};
    }
    static TransactionResult failure(ErrorResponse error, std::function<void()> afterwards = {}) {
        return {.outcome = std::move(error), .afterwards = std::move(afterwards)};
    }
    static TransactionResult noAnswer(std::string what, bool isUnsent = false) {
        return {.outcome = ErrorResponse::parsingFailed(), .silence = std::move(what), .isUnsent = isUnsent};
    }
};

/// Sends transactions of some kinds.
class TransactionExecutor : public virtual platform::Object {
public:
    using Completion = std::function<void(TransactionResult)>;

    /// Returns at once. Calls `onCompletion` exactly once, on any thread; a second call is ignored.
    virtual void execute(const NTransaction& transaction, Completion onCompletion) = 0;
};

/// Knows the executor of each kind.
class TransactionExecutorDIContract : public virtual platform::Object {
public:
    virtual std::shared_ptr<TransactionExecutor> getExecutor(const NTransaction& transaction) = 0;
};

/// Fails every transaction with `invlaidTransaction`. It stands in for kinds that nothing sends yet.
class InvalidTransactionExecutor final : public TransactionExecutor {
public:
    void execute(const NTransaction&, Completion onCompletion) override {
        onCompletion(TransactionResult::failure(ErrorResponse::invlaidTransaction()));
    }
};

/// Runs what a scheduler picks.
class TransactionRunner : public virtual platform::Object {
public:
    /// Called before something is picked, outside of a database transaction. Returns the share of the lock that the
    /// scheduler keeps until it rests, or null if nothing may be sent at present; the schedulers are woken when that
    /// changes.
    virtual SendingLock::Share begin() = 0;
    /// Notes one more start, in the commit that marks the transaction as started. Returns whether it is stored.
    virtual bool noteStart(const NTransaction& transaction) = 0;
    /// Forgets a start whose commit has failed.
    virtual void forgetStart(const NTransaction& transaction) = 0;
    /// Returns at once. Calls `onCompletion` when the result is stored, or cannot be, on any thread.
    virtual void run(const NTransaction& transaction, std::function<void()> onCompletion) = 0;
};

/// Drains a part of the current queue. Any thread may use it, and nothing waits.
class TransactionSchedulerContract : public virtual platform::Object {
public:
    /// Switches sending on, and runs.
    virtual void startSync() = 0;
    /// Looks for something to send, once more if it is sending. Does nothing while sending is off.
    virtual void run() = 0;
    /// Switches sending off. What is on its way is still taken in.
    virtual void stopSync() = 0;
    /// Calls back on a background queue once nothing is on its way and nothing can go at the moment. What was left
    /// behind by the time limit does not count.
    virtual void whenResting(std::function<void()> callback) = 0;
};

}  // namespace tarvo
