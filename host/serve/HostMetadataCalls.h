#pragma once

#include "bridge/Registry.h"
#include "host/Host.h"

namespace tarvo::host {

/// Adds the calls that download metadata and views into the database. The host must live as long as the registry is
/// used.
void addMetadataCalls(bridge::Registry& registry, Host& host);

}  // namespace tarvo::host
