#pragma once

#include "bridge/Registry.h"

namespace tarvo::host {

/// Adds the calls for the queue of changes: `host.queue.start`, `.stop`, `.list`, `.content`, `.retry` and `.idle`.
void addQueueCalls(bridge::Registry& registry);

}  // namespace tarvo::host
