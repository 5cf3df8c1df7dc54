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
using Names = FieldMetadataConstants;

// A type that this version does not know fails the field: nobody could say what its values are.
const auto fieldForm = form<F, Names>(
    member(&F::fieldID, &Names::FieldID), member(&F::fieldAPIName, &Names::FieldAPIName),
    member(&F::moduleName, &Names::ModuleName), member(&F::columnCRMName, &Names::ColumnCRMName),
    member(&F::fieldLabel, &Names::FieldLabel), required(member(&F::fieldType, &Names::FieldType, FieldDataType::none)),
    member(&F::maxLength, &Names::MaxLength), member(&F::isReadOnly, &Names::IsReadOnly),
    member(&F::isCustomField, &Names::IsCustomField), member(&F::isUnique, &Names::IsUnique),
    member(&F::isQuickCreate, &Names::IsQuickCreate), member(&F::isPrimaryKey, &Names::IsPrimaryKey),
    member(&F::isMproxyMetadata, &Names::IsMproxyMetadata), member(&F::lookupModule, &Names::LookupModule),
    member(&F::relatedListID, &Names::RelatedListID), member(&F::visible, &Names::Visible),
    member(&F::mode, &Names::Mode), memberBy<DisplayPrefsCodec>(&F::displayPrefs, &Names::DisplayPrefs));

FieldIdentifier namingInForce() { return CommonConfigration::sharedInstance().fieldIdentifier.get(); }

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
