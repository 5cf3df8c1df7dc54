#include "tarvobase/value_objects/field/FieldColumnName.h"

#include "tarvobase/value_objects/field/FieldMetadata.h"

namespace tarvo {

SortColumn sortColumn(FieldColumnName column) {
    static constexpr FieldMetadataDatabaseConstants names;
    switch (column) {
        case FieldColumnName::FieldID:
            return {names.FieldID};
        case FieldColumnName::FieldAPIName:
            return {names.FieldAPIName};
        case FieldColumnName::ModuleName:
            return {names.ModuleName};
        case FieldColumnName::ColumnCRMName:
            return {names.ColumnCRMName};
        case FieldColumnName::FieldLabel:
            return {names.FieldLabel};
        case FieldColumnName::FieldType:
            return {names.FieldType};
        case FieldColumnName::MaxLength:
            return {names.MaxLength, true};
        case FieldColumnName::IsReadOnly:
            return {names.IsReadOnly};
        case FieldColumnName::IsCustomField:
            return {names.IsCustomField};
        case FieldColumnName::IsUnique:
            return {names.IsUnique};
        case FieldColumnName::IsQuickCreate:
            return {names.IsQuickCreate};
        case FieldColumnName::IsPrimaryKey:
            return {names.IsPrimaryKey};
        case FieldColumnName::IsMproxyMetadata:
            return {names.IsMproxyMetadata};
        case FieldColumnName::LookupModule:
            return {names.LookupModule};
        case FieldColumnName::RelatedListID:
            return {names.RelatedListID};
        case FieldColumnName::Visible:
            return {names.Visible};
        case FieldColumnName::Mode:
            return {names.Mode};
        case FieldColumnName::DisplayPrefs:
            break;
    }
    return {names.DisplayPrefs};
}

}  // namespace tarvo
