#pragma once

#include <vector>

#include "tarvobase/value_objects/Sort.h"

namespace tarvo {

/// Columns that a list of fields may be sorted by.
enum class FieldColumnName {
    FieldID,
    FieldAPIName,
    ModuleName,
    ColumnCRMName,
    FieldLabel,
    FieldType,
    MaxLength,
    IsReadOnly,
    IsCustomField,
    IsUnique,
    IsQuickCreate,
    IsPrimaryKey,
    IsMproxyMetadata,
    LookupModule,
    RelatedListID,
    Visible,
    Mode,
    DisplayPrefs
};

/// Columns that the rows of layouts may be sorted by.
enum class LayoutFieldColumnName { layoutID, sectionSequence, fieldPosition };

using FieldSort = Sort<FieldColumnName>;
using LayoutSort = Sort<LayoutFieldColumnName>;

/// The order terms on the tables' columns. Columns that hold numbers sort as numbers, though they are stored as text.
SortDescriptor sortDescriptor(const FieldSort& sort);
SortDescriptor sortDescriptor(const LayoutSort& sort);
std::vector<SortDescriptor> sortDescriptors(const std::vector<FieldSort>& sorts);
std::vector<SortDescriptor> sortDescriptors(const std::vector<LayoutSort>& sorts);

}  // namespace tarvo
