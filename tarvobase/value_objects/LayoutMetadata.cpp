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

using Place = LayoutFieldData;
using PlaceNames = LayoutMetadataDatabaseConstants;

const auto placeForm = form<Place, PlaceNames>(
    member(&Place::layoutID, &PlaceNames::LayoutID), member(&Place::fieldID, &PlaceNames::FieldID),
    member(&Place::fieldAPIName, &PlaceNames::FieldAPIName), member(&Place::crmColumnName, &PlaceNames::ColumnCRMName),
    member(&Place::moduleName, &PlaceNames::ModuleName), member(&Place::sectionName, &PlaceNames::SectionName),
    member(&Place::sectionDV, &PlaceNames::SectionDV), member(&Place::isSubformSection, &PlaceNames::IsSubformSection),
    member(&Place::sectionSequence, &PlaceNames::SectionSequence),
    memberBy<OptBoolCodec>(&Place::mandatory, &PlaceNames::Mandatory),
    member(&Place::defaultValue, &PlaceNames::DefaultValue), member(&Place::fieldPosition, &PlaceNames::FieldPosition),
    memberBy<AdditionalInfoCodec>(&Place::additionalInfo, &PlaceNames::AdditionalInfo));

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
