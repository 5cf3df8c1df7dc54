#include "tarvobase/value_objects/layout/LayoutMetadata.h"

#include "tarvobase/configuration/Variant.h"
#include "tarvobase/storage/StoredForm.h"

namespace tarvo {

Value OptBoolCodec::write(bool value, Form form) { return MemberCodec<bool>::write(value, form); }
std::optional<bool> OptBoolCodec::read(const ValueView& view, Form) {
    if (view.isNull()) return std::nullopt;
    return view.asBool() == true || view.asInteger() == 1 || view.asText() == "true";
}

Value AdditionalInfoCodec::write(const std::optional<ValueMap>& map, Form) {
    return map ? jsonTextOrNull(*map, "additionalInfo") : Value();
}
std::optional<std::optional<ValueMap>> AdditionalInfoCodec::read(const ValueView& view, Form form) {
    return MemberCodec<std::optional<ValueMap>>::read(view, form);
}

LayoutMetadata::LayoutMetadata(const LayoutFieldData& place, const FieldMetadata& field)
    : FieldMetadata(field),
      layoutID(place.layoutID),
      sectionName(place.sectionName),
      sectionDV(place.sectionDV),
      isSubformSection(place.isSubformSection),
      sectionSequence(place.sectionSequence),
      mandatory(place.mandatory),
      defaultValue(place.defaultValue),
      fieldPosition(place.fieldPosition),
      additionalInfo(place.additionalInfo) {}

LayoutFieldData LayoutMetadata::layoutFieldData() const {
    return {.layoutID = layoutID,
            .fieldID = fieldID,
            .fieldAPIName = fieldAPIName,
            .crmColumnName = columnCRMName,
            .moduleName = moduleName,
            .sectionName = sectionName,
            .sectionDV = sectionDV,
            .isSubformSection = isSubformSection,
            .sectionSequence = sectionSequence,
            .mandatory = mandatory,
            .defaultValue = defaultValue,
            .fieldPosition = fieldPosition,
            .additionalInfo = additionalInfo};
}

ValueMap LayoutMetadataDatabaseConstants::convertLayoutMetadataToDictionary(const LayoutFieldData& place) const {
    auto row = StoredForm<LayoutFieldData>::toMap(place, *this);
    if (!variant::hasMoreLayoutColumns()) {
        row.remove(IsSubformSection);
        row.remove(AdditionalInfo);
    }
    return row;
}

std::optional<LayoutMetadata> LayoutMetadataDatabaseConstants::convertDictionaryToLayoutMetadata(
    const Row& row, const FieldList& fieldList) const {
    auto place = StoredForm<LayoutFieldData>::read(row, *this);
    auto field = fieldList.getField(place.*fieldList.naming().layoutFieldDataIdentifierKP);
    if (!field) return std::nullopt;
    if (!variant::hasMoreLayoutColumns()) {
        place.isSubformSection = false;
        place.additionalInfo.reset();
    }
    return LayoutMetadata(place, *field);
}

}  // namespace tarvo
