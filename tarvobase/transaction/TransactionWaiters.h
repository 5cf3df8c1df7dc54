#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tarvobase/metadata/Stores.h"
#include "tarvobase/value_objects/transaction/ErrorResponse.h"

namespace tarvo {

/// What becomes of the transactions of the current queue that wait for another one, which may be an add of the older
/// queue under its number. Operations join the transaction of the database around them, and return whether everything
/// is stored. Notices come after the commit. Any thread may use it; each call blocks its caller.
class TransactionWaiters {
public:
    using Identifiers = std::map<std::string, std::string>;

    explicit TransactionWaiters(const Stores& stores);

    /// Keeps why a transaction failed. What waits for it through lookups, directly or not, fails with it.
    bool fail(std::int64_t id, const ErrorResponse& error) const;
    /// Takes back the errors of what waits for a transaction, which is to be sent again.
    bool recover(std::int64_t id) const;
    /// Gives the records of a finished transaction their ids in the rest of the current queue. A payload that changes
    /// is that of a transaction that was not sent, or that failed: the latter gets a new key.
    bool replaceRecordIdentifiers(const Identifiers& identifiers, std::int64_t id) const;
    /// Lets those go that wait for a finished transaction.
    bool release(std::int64_t id) const;

private:
    using Ids = std::vector<std::int64_t>;
    std::optional<std::vector<NTransaction>> readableAmong(const Ids& ids) const;
    bool notifyOfErrors(const std::map<std::int64_t, ErrorResponse>& errors) const;
    bool renewKeys(const std::map<std::int64_t, std::string>& rewritten) const;

    const Stores stores_;
};

}  // namespace tarvo
