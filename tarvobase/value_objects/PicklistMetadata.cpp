#include "tarvobase/value_objects/PicklistMetadata.h"

namespace tarvo {

namespace {

using Picklist = PicklistMetadata;
using PicklistNames = PicklistMetadataConstants;

const auto picklistForm = form<Picklist, PicklistNames>(
    required(member(&Picklist::fieldActualValue, &PicklistNames::FieldActualValue)),
    member(&Picklist::fieldOptionalValue, &PicklistNames::FieldOptionalValue),
    member(&Picklist::fieldID, &PicklistNames::FieldID), member(&Picklist::fieldAPIName, &PicklistNames::FieldAPIName),
    member(&Picklist::crmColumnName, &PicklistNames::CrmColumnName),
    member(&Picklist::moduleName, &PicklistNames::ModuleName), member(&Picklist::layoutID, &PicklistNames::LayoutID),
    member(&Picklist::fieldMap, &PicklistNames::FieldMap), member(&Picklist::position, &PicklistNames::Position));

}  // namespace

ValueMap PicklistMetadataConstants::getDictionary(const PicklistMetadata& picklist) const {
    return picklistForm.toMap(picklist, *this, Form::plain);
}
Result<PicklistMetadata, std::string> PicklistMetadataConstants::getValue(const ValueMap& map) const {
    return picklistForm.readRequired(map, *this, Form::plain);
}
ValueMap PicklistMetadataDatabseConstants::getDictionary(const PicklistMetadata& picklist) const {
    return picklistForm.toMap(picklist, *this, Form::table);
}
Result<PicklistMetadata, std::string> PicklistMetadataDatabseConstants::getValue(const Row& row) const {
    return picklistForm.readRequired(row, *this, Form::table);
}

}  // namespace tarvo
