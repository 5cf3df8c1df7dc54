#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tarvobase/records/RecordPersistanceDelegate.h"

namespace tarvo {

class DatabaseAdapter;

/// Removes what is left here of records that the server does not have any more: their rows, and their places in lists.
/// A place without a record would still count as held when the server is asked for the rest of the list, and a record
/// of the rest would be passed over. Call it inside the transaction that stores the server's answer. Returns false if
/// the database refuses.
bool removeDeletedRecords(const std::shared_ptr<DatabaseAdapter>& databaseAdapter, RecordPersistanceDelegate& records,
                          const std::string& moduleName, const std::vector<std::string>& recordIds);

}  // namespace tarvo
