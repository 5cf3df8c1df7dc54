#pragma once

#include "bridge/Registry.h"

namespace tarvo::host {

/// Adds the calls for rounds of sync: `host.sync.rounds` and `.stop`.
void addSyncStateCalls(bridge::Registry& registry);

}  // namespace tarvo::host
