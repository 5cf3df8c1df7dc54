#include "tarvobase/configuration/FieldIdentifier.h"

#include "tarvobase/value_objects/field/FieldMetadata.h"
#include "tarvobase/value_objects/field/PicklistMetadata.h"
#include "tarvobase/value_objects/layout/LayoutMetadata.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"

namespace tarvo {

const FieldIdentifier& FieldIdentifier::crmColumnNameIdentifier() {
    static const FieldIdentifier identifier{
        &FieldMetadata::columnCRMName,    static_cast<std::string LayoutMetadata::*>(&FieldMetadata::columnCRMName),
        &PicklistMetadata::crmColumnName, &FieldMetadataConstants::ColumnCRMName,
        &LayoutFieldData::crmColumnName,  &CRMColumnConstant};
    return identifier;
}

const FieldIdentifier& FieldIdentifier::fieldAPINameIdentifier() {
    static const FieldIdentifier identifier{
        &FieldMetadata::fieldAPIName,    static_cast<std::string LayoutMetadata::*>(&FieldMetadata::fieldAPIName),
        &PicklistMetadata::fieldAPIName, &FieldMetadataConstants::FieldAPIName,
        &LayoutFieldData::fieldAPIName,  &FieldAPIConstant};
    return identifier;
}

}  // namespace tarvo
