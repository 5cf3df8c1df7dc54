#include "tarvobase/value_objects/field/SortField.h"

#include "tarvobase/value_objects/field/FieldMetadata.h"

namespace tarvo {

SortDescriptor sortDescriptor(const SortField& sortField, const FieldMetadata* fieldMetadata) {
    return SortDescriptor({.colName = sortField.column,
                           .ascending = sortField.isAscending,
                           .numeric = fieldMetadata && isNumeric(fieldMetadata->fieldType)});
}

SortDescriptor sortDescriptor(const SortField& sortField, const FieldMetadata& fieldMetadata, bool nullValuesAtEnd) {
    return SortDescriptor({.colName = sortField.column,
                           .ascending = sortField.isAscending,
                           .numeric = isNumeric(fieldMetadata.fieldType),
                           .nullValuesAtEnd = nullValuesAtEnd});
}

}  // namespace tarvo
