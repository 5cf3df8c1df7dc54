#include "tarvobase/value_objects/LayoutMetadata.h"

#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/value_objects/StoredForm.h"

namespace tarvo {

namespace {

/// True is the integer 1, a Bool true or the text "true", whatever the server's type of the column.
struct OptBoolCodec : MemberCodec<bool> {
    static std::optional<bool> read(const ValueView& view, Form) {
        if (view.isNull()) return std::nullopt;
        return view.asBool() == true || view.asInteger() == 1 || view.asText() == "true";
    }
};

struct AdditionalInfoCodec : MemberCodec<std::optional<ValueMap>> {
    static Value write(const std::optional<ValueMap>& map, Form) {
        return map ? jsonTextOrNull(*map, "additionalInfo") : Value();
    }
};

using L = LayoutFieldData;
using Names = LayoutMetadataDatabaseConstants;

const auto placeForm = form<L, Names>(
    member(&L::layoutID, &Names::LayoutID), member(&L::fieldID, &Names::FieldID),
    member(&L::fieldAPIName, &Names::FieldAPIName), member(&L::crmColumnName, &Names::ColumnCRMName),
    member(&L::moduleName, &Names::ModuleName), member(&L::sectionName, &Names::SectionName),
    member(&L::sectionDV, &Names::SectionDV), member(&L::isSubformSection, &Names::IsSubformSection),
    member(&L::sectionSequence, &Names::SectionSequence), memberBy<OptBoolCodec>(&L::mandatory, &Names::Mandatory),
    member(&L::defaultValue, &Names::DefaultValue), member(&L::fieldPosition, &Names::FieldPosition),
    memberBy<AdditionalInfoCodec>(&L::additionalInfo, &Names::AdditionalInfo));

bool hasMoreColumns() { return CommonConfigration::sharedInstance().hasAdditionalInfoAndSubformKeysInLayoutMeta.get(); }

}  // namespace

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
    auto row = placeForm.toMap(place, *this, Form::table);
    if (!hasMoreColumns()) {
        row.remove(IsSubformSection);
        row.remove(AdditionalInfo);
    }
    return row;
}

std::optional<LayoutMetadata> LayoutMetadataDatabaseConstants::convertDictionaryToLayoutMetadata(
    const Row& row, const FieldList& fieldList) const {
    auto place = placeForm.read(row, *this, Form::table);
    auto field = fieldList.getField(place.*fieldList.naming().layoutFieldDataIdentifierKP);
    if (!field) return std::nullopt;
    if (!hasMoreColumns()) {
        place.isSubformSection = false;
        place.additionalInfo.reset();
    }
    return LayoutMetadata(place, *field);
}

}  // namespace tarvo
