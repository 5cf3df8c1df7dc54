#pragma once

#include <string>
#include <vector>

#include "tarvobase/records/FreeText.h"
#include "tarvobase/value_objects/transaction/Transaction.h"

namespace tarvo {

/// A row of the older queue with what decides when it is sent.
struct QueuedChange {
    /// Without `freeText`, whatever looks like a temporary id may be one.
    explicit QueuedChange(Transaction row, const FreeText& freeText = {});

    Transaction transaction;
    /// The temporary ids that its request would name. An add leaves out its own, and free text may name any.
    std::vector<std::string> temporaryIds;
    /// Whether the parameters are a map. Otherwise no request can be made of the row, which stays "InProgress".
    bool hasParameters = true;

    bool isReady() const { return !transaction.extras && !transaction.errorMessage && !transaction.serverResponse; }
    bool isSending() const { return transaction.extras == Transaction::State::inProgress; }
    /// Whether it was refused, or can never be sent. A text that is not a known state counts as an error.
    bool hasFailed() const { return !isReady() && !(isSending() && hasParameters); }
};

/// Replaces an id in the ids, the parameters and the body of a row. In JSON only whole texts are replaced, and free
/// text stays as it was written.
Transaction withReplacedId(Transaction transaction, const std::string& formerId, const std::string& newId,
                           const FreeText& freeText = {});

}  // namespace tarvo
