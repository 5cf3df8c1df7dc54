#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tarvobase/metadata/Stores.h"

namespace tarvo {

/// Makes the changes of the older queue ready that failed because the add of a record did, and those that failed
/// because of them in turn: the record is to be added again. The same goes for the transactions of the current queue
/// that wait for the add, whose place there is `transactionNumber`, 0 for one without. Call it inside the transaction
/// that makes the add ready. Returns the ids of the changes, or nullopt if the database refuses.
std::optional<std::vector<std::string>> freeDependents(const Stores& stores, const std::string& recordId,
                                                       std::int64_t transactionNumber);

}  // namespace tarvo
