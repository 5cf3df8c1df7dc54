#pragma once

#include <string>

#include "tarvobase/transaction/Change.h"

namespace tarvo {

/// Returns why the server does not have a change yet, as the rest of a sentence that begins with "change N". Takes a
/// change of `QueuedChanges::list`. Times are those of the machine's zone.
std::string whyItWaits(const Change& change);

}  // namespace tarvo
