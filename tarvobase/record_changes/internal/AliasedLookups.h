#pragma once

#include "tarvobase/metadata/Stores.h"
#include "tarvobase/records/Record.h"

namespace tarvo {

/// Replaces temporary ids in the columns of a record, also in lists and rows, whose records have real ones by now. The
/// record's own id is not among them. Returns false if the ids cannot be read.
bool replaceAliases(const Stores& stores, Record& record);

}  // namespace tarvo
