#pragma once

#include "platform/Value.h"
#include "sandbox/CallTable.h"
#include "sandbox/data/DataSet.h"

namespace tarvo::sandbox {

/// The positional settings of an organisation, twenty positions; columns are named as the naming says.
ValueList makeSettings(const DataSet& data, Naming naming);

}  // namespace tarvo::sandbox
