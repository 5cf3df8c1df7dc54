#pragma once

#include <string>
#include <string_view>

#include "sandbox/CallTable.h"
#include "sandbox/data/Metadata.h"

namespace tarvo::sandbox {

/// Holds the statements that make the tables of a module's records. They may run again without harm, and do not contain
/// "|", by which clients join them.
struct RecordTables {
    std::string records;
    /// Tables of which records a list, the related list of another record, or the choice of a lookup has shown.
    std::string customViewMap;
    std::string relatedListMap;
    std::string lookupMap;
};

RecordTables recordTables(std::string_view module, const ModuleMetadata& metadata, Naming naming);

}  // namespace tarvo::sandbox
