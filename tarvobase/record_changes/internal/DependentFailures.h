#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tarvobase/metadata/Stores.h"

namespace tarvo {

/// Makes the changes of the older queue ready that failed because the add of a record did, and those that failed
/// because of them in turn: the record is to be added again. Call it inside the transaction that makes the add ready.
/// Returns the ids of the changes, or nullopt if the database refuses.
std::optional<std::vector<std::string>> freeDependents(const Stores& stores, const std::string& recordId);

}  // namespace tarvo
