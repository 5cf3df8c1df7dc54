#pragma once

#include <vector>

#include "tarvobase/database_layer/SortDescriptor.h"
#include "tarvobase/value_objects/field/SortField.h"

namespace tarvo {

class FieldList;
struct FieldMetadata;
struct ModuleInfo;

/// Turns sort fields into order terms over a record table. A column without a field is logged and skipped. Lookups sort
/// by their display text, picklists by the order of their values in the requested direction. A value that is not in the
/// list comes after those that are, and nulls come last in either direction.
struct SortFieldToSortDescriptor {
    static std::vector<SortDescriptor> sortDescriptor(const std::vector<SortField>& sortFields,
                                                      const FieldList& fieldList);
    static std::vector<SortDescriptor> sortDescriptor(const std::vector<SortField>& sortFields,
                                                      const ModuleInfo& moduleInfo);
    /// Returns the term of a field that sorts by its own column.
    static SortDescriptor plainDescriptor(const SortField& sortField, const FieldMetadata& field);
};

}  // namespace tarvo
