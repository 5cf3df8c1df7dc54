#pragma once

#include "bridge/Registry.h"
#include "host/Host.h"

namespace tarvo::host {

/// Adds the calls on the record tables, one per operation, and the conversions from and into the server's form.
/// The host must live as long as the registry is used.
void addRecordCalls(bridge::Registry& registry, Host& host);

}  // namespace tarvo::host
