#pragma once

#include <string>

#include "platform/Value.h"

namespace tarvo {

/// Replaces the texts of a map that are `former`, however deeply they are nested. Returns whether there was one.
bool replaceTexts(ValueMap& map, const std::string& former, const std::string& replacement);

}  // namespace tarvo
