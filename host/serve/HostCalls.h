#pragma once

#include <memory>
#include <optional>
#include <string>

#include "bridge/Registry.h"
#include "host/Host.h"

namespace tarvo::host {

/// Adds the calls of the host itself. The passphrase is for calls that bring none. The host must live as long as the
/// registry is used.
void addHostCalls(bridge::Registry& registry, Host& host, const std::optional<platform::Secret>& passphrase);

}  // namespace tarvo::host
