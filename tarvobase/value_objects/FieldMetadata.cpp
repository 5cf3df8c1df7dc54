#include "tarvobase/value_objects/FieldMetadata.h"

#include "platform/Text.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/utils/LogOnce.h"
#include "tarvobase/value_objects/IdentifierConstants.h"
#include "tarvobase/value_objects/StoredForm.h"

namespace tarvo {

namespace {

/// A stored text that is no JSON map costs the preferences, not the field.
struct DisplayPrefsCodec : MemberCodec<ValueMap> {
    static Value write(const ValueMap& map, Form form) {
        return form == Form::plain ? Value(map) : jsonTextOrNull(map, "displayPrefs");
    }
    static std::optional<ValueMap> read(const ValueView& view, Form form) {
        auto map = MemberCodec<ValueMap>::read(view, form);
        if (!map) logOnce("displayPrefs: a stored text is no JSON map");
        return map;
    }
};

using F = FieldMetadata;
using FieldNames = FieldMetadataConstants;

// A type that this version does not know fails the field: nobody could say what its values are.
const auto fieldForm = form<F, FieldNames>(
    member(&F::fieldID, &FieldNames::FieldID), member(&F::fieldAPIName, &FieldNames::FieldAPIName),
    member(&F::moduleName, &FieldNames::ModuleName), member(&F::columnCRMName, &FieldNames::ColumnCRMName),
    member(&F::fieldLabel, &FieldNames::FieldLabel),
    required(member(&F::fieldType, &FieldNames::FieldType, FieldDataType::none)),
    member(&F::maxLength, &FieldNames::MaxLength), member(&F::isReadOnly, &FieldNames::IsReadOnly),
    member(&F::isCustomField, &FieldNames::IsCustomField), member(&F::isUnique, &FieldNames::IsUnique),
    member(&F::isQuickCreate, &FieldNames::IsQuickCreate), member(&F::isPrimaryKey, &FieldNames::IsPrimaryKey),
    member(&F::isMproxyMetadata, &FieldNames::IsMproxyMetadata), member(&F::lookupModule, &FieldNames::LookupModule),
    member(&F::relatedListID, &FieldNames::RelatedListID), member(&F::visible, &FieldNames::Visible),
    member(&F::mode, &FieldNames::Mode), memberBy<DisplayPrefsCodec>(&F::displayPrefs, &FieldNames::DisplayPrefs));

}  // namespace

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

ValueMap FieldMetadataConstants::getDictionary(const FieldMetadata& fieldMetadata) const {
    return fieldForm.toMap(fieldMetadata, *this, Form::plain);
}
Result<FieldMetadata, std::string> FieldMetadataConstants::getValue(const ValueMap& map) const {
    return fieldForm.readRequired(map, *this, Form::plain);
}
ValueMap FieldMetadataDatabaseConstants::getDictionary(const FieldMetadata& fieldMetadata) const {
    return fieldForm.toMap(fieldMetadata, *this, Form::table);
}
Result<FieldMetadata, std::string> FieldMetadataDatabaseConstants::getValue(const Row& row) const {
    return fieldForm.readRequired(row, *this, Form::table);
}
std::string_view FieldMetadataDatabaseConstants::fieldIdentifier() const { return fieldIdentifier(namingInForce()); }

}  // namespace tarvo
