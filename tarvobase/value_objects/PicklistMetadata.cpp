#include "tarvobase/value_objects/PicklistMetadata.h"

namespace tarvo {

namespace {

using P = PicklistMetadata;
using Names = PicklistMetadataConstants;

const auto picklistForm =
    form<P, Names>(required(member(&P::fieldActualValue, &Names::FieldActualValue)),
                   member(&P::fieldOptionalValue, &Names::FieldOptionalValue), member(&P::fieldID, &Names::FieldID),
                   member(&P::fieldAPIName, &Names::FieldAPIName), member(&P::crmColumnName, &Names::CrmColumnName),
                   member(&P::moduleName, &Names::ModuleName), member(&P::layoutID, &Names::LayoutID),
                   member(&P::fieldMap, &Names::FieldMap), member(&P::position, &Names::Position));

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
