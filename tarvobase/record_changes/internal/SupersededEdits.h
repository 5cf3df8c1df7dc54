#pragma once

#include <cstdint>
#include <vector>

#include "tarvobase/metadata/Stores.h"
#include "tarvobase/value_objects/transaction/NTransaction.h"
#include "tarvobase/value_objects/transaction/Transaction.h"

namespace tarvo {

/// A refused edit holds nothing up, so later edits of its record may reach the server before it is tried again. It must
/// not undo them then. Call these inside a transaction of the database. They block their caller, and return false if
/// something could not be stored.
struct SupersededEdits {
    /// Takes out of a failed edit what later edits of its record set; `others` may hold any rows of the record. An edit
    /// of which nothing is left goes.
    static bool leaveOut(const Stores& stores, const Transaction& failed, const std::vector<Transaction>& others);
    /// Takes out of the failed edits among these rows of a record what `accepted` has set. Call it when the server has
    /// accepted that edit, whose own row is gone then.
    static bool leaveOutAccepted(const Stores& stores, const Transaction& accepted,
                                 const std::vector<Transaction>& rows);
    /// Does the same to the edits of the record in the older queue that were made before an edit of the current one and
    /// are not at the server. Call it when the server has accepted that edit, or when it has become a part of the add.
    static bool leaveOutAccepted(const Stores& stores, const NTransaction& accepted, std::int64_t number);
    /// Does the same to the failed edits of the record in the current queue that were made before an edit of the older
    /// one.
    static bool leaveOutOfCurrent(const Stores& stores, const Transaction& accepted, std::int64_t number);
    /// Does the same to all failed edits of a record that are to be tried again: a later one of the other queue may be
    /// on its way already.
    static bool leaveOutBetweenQueues(const Stores& stores, const std::string& recordId);
};

}  // namespace tarvo
