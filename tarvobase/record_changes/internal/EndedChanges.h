#pragma once

#include <vector>

#include "tarvobase/metadata/Stores.h"
#include "tarvobase/value_objects/transaction/ChangeRegister.h"
#include "tarvobase/value_objects/transaction/Transaction.h"

namespace tarvo {

/// Takes rows out of the older queue and out of the register, which remembers their outcome. Call it inside a
/// transaction of the database. Returns false if the database refuses.
bool endOlderChanges(const Stores& stores, const std::vector<Transaction>& rows, ChangeOutcome outcome);

}  // namespace tarvo
