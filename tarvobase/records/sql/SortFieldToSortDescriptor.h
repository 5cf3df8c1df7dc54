#pragma once

#include <vector>

#include "tarvobase/database_layer/SortDescriptor.h"
#include "tarvobase/value_objects/field/SortField.h"

namespace tarvo {

class FieldList;
struct FieldMetadata;
struct ModuleInfo;

/// A choice of order over a record table as order terms. A column without a field is logged and adds none. Lookups sort
/// by what they show, picklists by the order of their values, in the direction asked for; a value outside the list
/// comes behind those in it, and nulls come last in either direction.
struct SortFieldToSortDescriptor {
    static std::vector<SortDescriptor> sortDescriptor(const std::vector<SortField>& sortFields,
                                                      const FieldList& fieldList);
    static std::vector<SortDescriptor> sortDescriptor(const std::vector<SortField>& sortFields,
                                                      const ModuleInfo& moduleInfo);
    /// The term of a field that sorts by its own column.
    static SortDescriptor plainDescriptor(const SortField& sortField, const FieldMetadata& field);
};

}  // namespace tarvo
