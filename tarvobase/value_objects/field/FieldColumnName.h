#pragma once

#include "tarvobase/value_objects/field/Sort.h"

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

/// Returns the column of the table of fields for this case.
SortColumn sortColumn(FieldColumnName column);

using FieldSort = Sort<FieldColumnName>;

}  // namespace tarvo
