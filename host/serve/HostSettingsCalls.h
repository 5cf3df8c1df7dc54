#pragma once

#include <memory>

#include "bridge/Registry.h"
#include "bridge/Topics.h"

namespace tarvo::host {

/// Adds `host.settings`: reads, writes, removes and observes values of the settings store. Observing goes through the
/// topics of the session.
void addSettingsCalls(bridge::Registry& registry, const std::shared_ptr<bridge::Topics>& topics);

}  // namespace tarvo::host
