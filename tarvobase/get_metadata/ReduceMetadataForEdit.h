#pragma once

#include <vector>

#include "tarvobase/records/Record.h"

namespace tarvo {

/// Makes the smaller records that the edit screen of a list works on.
struct ReduceMetadataForEdit {
    /// Returns records of the same ids that have only the named columns and the id. A column keeps its display text if
    /// the original has one. A column that the original lacks is present without a value.
    static std::vector<Record> reduce(const std::vector<Record>& records, Record::Names columns,
                                      const ModuleIdentifier& moduleId);
};

}  // namespace tarvo
