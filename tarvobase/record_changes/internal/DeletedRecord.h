#pragma once

#include <string>

#include "tarvobase/metadata/Stores.h"
#include "tarvobase/records/RecordPersistanceDelegate.h"

namespace tarvo {

/// Removes what is left here of a record that the server does not have any more: its rows, and its places in lists. A
/// place without a record would still count as held when the server is asked for the rest of the list, and a record of
/// the rest would be passed over. Call it inside the transaction that stores the server's answer. Returns false if the
/// database refuses.
bool removeDeletedRecord(const Stores& stores, RecordPersistanceDelegate& records, const std::string& moduleName,
                         const std::string& recordId);

}  // namespace tarvo
