#pragma once

#include <vector>

#include "tarvobase/records/Record.h"

namespace tarvo {

/// The smaller records that the edit screen of a list works on.
struct ReduceMetadataForEdit {
    /// Records of the same ids with the named columns and the id alone, each with the display text beside it when the
    /// original has one. A column that the original lacks is there without a value.
    static std::vector<Record> reduce(const std::vector<Record>& records, Record::Names columns,
                                      const ModuleIdentifier& moduleId);
};

}  // namespace tarvo
