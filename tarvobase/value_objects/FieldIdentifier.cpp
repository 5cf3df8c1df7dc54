#include "tarvobase/configuration/FieldIdentifier.h"

#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/value_objects/FieldMetadata.h"
#include "tarvobase/value_objects/IdentifierConstants.h"
#include "tarvobase/value_objects/LayoutMetadata.h"
#include "tarvobase/value_objects/PicklistMetadata.h"

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

const std::string& FieldMetadata::fieldIdentifier() const {
    return this->*CommonConfigration::sharedInstance().fieldIdentifier.get().fieldIdentifierPath;
}

const IdentifierConstants CRMColumnConstant{
    .rowID = "_id", .id = "ID", .recordId = "RECORD_ID", .fullName = "FULLNAME", .modifiedTime = "MODIFIEDTIME"};
const IdentifierConstants FieldAPIConstant{
    .rowID = "_id", .id = "id", .recordId = "record_id", .fullName = "Full_Name", .modifiedTime = "Modified_Time"};

const IdentifierConstants& FieldIdentifierConstants() {
    return *CommonConfigration::sharedInstance().fieldIdentifier.get().constant;
}

}  // namespace tarvo
