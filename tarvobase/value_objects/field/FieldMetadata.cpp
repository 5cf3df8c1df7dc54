#include "tarvobase/value_objects/field/FieldMetadata.h"

#include "platform/Text.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/storage/StoredForm.h"
#include "tarvobase/utils/LogOnce.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"

namespace tarvo {

template struct StoredNames<FieldMetadataConstants, FieldMetadata, Result<FieldMetadata, std::string>>;

Value DisplayPrefsCodec::write(const ValueMap& map, Form form) {
    return form == Form::plain ? Value(map) : jsonTextOrNull(map, "displayPrefs");
}
std::optional<ValueMap> DisplayPrefsCodec::read(const ValueView& view, Form form) {
    auto map = MemberCodec<ValueMap>::read(view, form);
    if (!map) logOnce("displayPrefs: a stored text is not a JSON map");
    return map;
}

std::string_view FieldMetadataDatabaseConstants::fieldIdentifier() const { return fieldIdentifier(namingInForce()); }

int FieldMetadata::integerMode() const {
    auto number = text::toInteger(mode);
    return number && std::in_range<int>(*number) ? static_cast<int>(*number) : DisplayMode::display.rawValue;
}

const std::string& FieldMetadata::fieldIdentifier() const { return fieldIdentifier(namingInForce()); }

bool FieldMetadata::isLookupNameField() const {
    if (fieldType == FieldDataType::ownerlookup || fieldType == FieldDataType::userLookup) return true;
    if (fieldType == FieldDataType::lookup && (lookupModule == "Leads" || lookupModule == "Contacts")) return true;
    auto naming = namingInForce();
    return fieldIdentifier(naming) == naming.constant->seid;
}

std::optional<FieldMetadata::SubformModuleInfo> FieldMetadata::getSubformModuleInfo() const {
    auto value = displayPrefs.find(Constant::DisplayPrefs::subform);
    auto texts = value ? MemberCodec<std::vector<std::string>>::read(*value, Form::plain) : std::nullopt;
    if (!texts || texts->size() != 2) return std::nullopt;
    return SubformModuleInfo{texts->front(), texts->back()};
}

}  // namespace tarvo
