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

template <>
struct EnumCases<FieldColumnName> {
    using C = FieldColumnName;
    static constexpr EnumCase<C> cases[] = {{C::FieldID, "FieldID"},
                                            {C::FieldAPIName, "FieldAPIName"},
                                            {C::ModuleName, "ModuleName"},
                                            {C::ColumnCRMName, "ColumnCRMName"},
                                            {C::FieldLabel, "FieldLabel"},
                                            {C::FieldType, "FieldType"},
                                            {C::MaxLength, "MaxLength"},
                                            {C::IsReadOnly, "IsReadOnly"},
                                            {C::IsCustomField, "IsCustomField"},
                                            {C::IsUnique, "IsUnique"},
                                            {C::IsQuickCreate, "IsQuickCreate"},
                                            {C::IsPrimaryKey, "IsPrimaryKey"},
                                            {C::IsMproxyMetadata, "IsMproxyMetadata"},
                                            {C::LookupModule, "LookupModule"},
                                            {C::RelatedListID, "RelatedListID"},
                                            {C::Visible, "Visible"},
                                            {C::Mode, "Mode"},
                                            {C::DisplayPrefs, "DisplayPrefs"}};
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
