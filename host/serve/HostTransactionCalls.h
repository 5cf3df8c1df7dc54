#pragma once

#include "bridge/Registry.h"

namespace tarvo::host {

/// Adds the calls of the current queue of changes, `host.transaction.*`. Each works on the queue of the scope in force,
/// and is refused without an open database.
void addTransactionCalls(bridge::Registry& registry);

}  // namespace tarvo::host
