#pragma once

#include "bridge/Registry.h"

namespace tarvo::bridge {

/// Every public operation of the library, by the name of its class.
void addCalls(Registry& registry);

}  // namespace tarvo::bridge
