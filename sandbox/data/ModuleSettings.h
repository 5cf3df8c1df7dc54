#pragma once

#include "platform/Value.h"
#include "sandbox/CallTable.h"
#include "sandbox/data/DataSet.h"

namespace tarvo::sandbox {

/// Makes the settings of an organisation, a list of twenty positions. Columns follow the naming.
ValueList makeSettings(const DataSet& data, Naming naming);

}  // namespace tarvo::sandbox
