#pragma once

#include <vector>

#include "sandbox/data/DataSet.h"

namespace tarvo::sandbox {

/// Makes the modules of the organisation in the order of its module list. Modules that only hold rows of other modules
/// come last.
std::vector<ModuleData> makeModules(IdSequence& ids);

}  // namespace tarvo::sandbox
