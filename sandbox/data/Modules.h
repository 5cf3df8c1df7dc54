#pragma once

#include <vector>

#include "sandbox/data/DataSet.h"

namespace tarvo::sandbox {

/// The modules of the organisation in the order of its module list, those that only hold rows of others at the end.
std::vector<ModuleData> makeModules(IdSequence& ids);

}  // namespace tarvo::sandbox
