#include "tarvobase/records/FreeText.h"

#include "tarvobase/metadata/GetFieldListDM.h"
#include "tarvobase/records/RecordUtil.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"

namespace tarvo {

namespace {

bool isFreeTextType(FieldDataType type) {
    using T = FieldDataType;
    return type == T::text || type == T::textArea || type == T::email || type == T::phone || type == T::website;
}

/// These name records, whatever type a server gives them.
bool isIdOfRecord(std::string_view apiName) {
    return apiName == RecordConstants::FieldAPINames::Id || apiName == FieldAPIConstant.Notes.seid;
}

}  // namespace

FreeText::FreeText(const Stores& stores) : fieldLists_(FieldListAssembler::getFieldListDM(stores.databaseAdapter())) {}

bool FreeText::holds(const std::string& moduleName, std::string_view apiName) const {
    // What a user writes in a note names no record, also before the fields of notes are stored.
    if (apiName == FieldAPIConstant.Notes.noteTitle || apiName == FieldAPIConstant.Notes.noteContent) return true;
    return namesOf(moduleName).apiNames.contains(apiName);
}

bool FreeText::holdsColumn(const std::string& moduleName, std::string_view column) const {
    return namesOf(moduleName).columns.contains(column);
}

const FreeText::Names& FreeText::namesOf(const std::string& moduleName) const {
    auto [found, isNew] = known_.try_emplace(moduleName);
    auto& names = found->second;
    auto fields = isNew && fieldLists_ ? fieldLists_->getFieldsWithoutPicklists(moduleName, std::nullopt)
                                       : GetFieldListDM::FieldListResult(MetadataError::notFound);
    if (!fields) return names;
    for (auto [column, field] : fields.value().orderedFields()) {
        if (!isFreeTextType(field.fieldType) || isIdOfRecord(field.fieldAPIName)) continue;
        names.apiNames.insert(field.fieldAPIName);
        names.columns.insert(column);
    }
    return names;
}

}  // namespace tarvo
