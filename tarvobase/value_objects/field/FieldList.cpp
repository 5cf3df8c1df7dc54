#include "tarvobase/value_objects/field/FieldList.h"

#include <algorithm>

#include "tarvobase/configuration/CommonConfigration.h"

namespace tarvo {

namespace {

/// Takes the fields in order. Fields whose identifier an earlier field has stay in `fields`.
FieldList::Fields takeOrderedBy(const FieldIdentifier& naming, std::vector<FieldMetadata>& fields) {
    FieldList::Fields ordered;
    std::vector<FieldMetadata> sharing;
    for (auto& field : fields) {
        auto identifier = field.fieldIdentifier(naming);
        if (ordered.contains(identifier))
            sharing.push_back(std::move(field));
        else
            ordered.set(identifier, std::move(field));
    }
    fields = std::move(sharing);
    return ordered;
}

}  // namespace

FieldList::FieldList() : FieldList("", {}, {}) {}

FieldList::FieldList(std::string moduleName, std::vector<FieldMetadata> fields, std::vector<PicklistMetadata> picklists)
    : FieldList(std::move(moduleName), std::move(fields), std::move(picklists), namingInForce()) {}

FieldList::FieldList(std::string moduleName, std::vector<FieldMetadata> fields, std::vector<PicklistMetadata> picklists,
                     const FieldIdentifier& naming)
    : content_([&] {
          auto ordered = takeOrderedBy(naming, fields);
          return std::make_shared<const Content>(Content{std::move(moduleName), std::move(ordered), std::move(fields),
                                                         picklistsByIdentifier(std::move(picklists), naming), naming});
      }()) {}

const Metadata* FieldList::getFieldByApiName(const std::string& apiName) const {
    if (auto field = MetadataInfoContract::getFieldByApiName(apiName)) return field;
    for (auto& field : fieldsOfSharedColumns())
        if (field.fieldAPIName == apiName) return &field;
    return nullptr;
}

std::vector<const Metadata*> FieldList::allFields() const {
    std::vector<const Metadata*> fields;
    fields.reserve(orderedFields().count());
    for (auto [identifier, field] : orderedFields()) fields.push_back(&field);
    return fields;
}

const std::vector<PicklistMetadata>& FieldList::getPicklist(const Metadata& field) const {
    return picklistIn(picklistIdentifierMap(), identifierOf(field));
}

bool FieldList::hasFields(const std::vector<std::string>& identifiers) const {
    return std::all_of(identifiers.begin(), identifiers.end(),
                       [this](auto& identifier) { return hasField(identifier); });
}

std::vector<const Metadata*> FieldList::getAllLookupFields() const {
    auto fields = allFields();
    std::erase_if(fields, [](auto* field) {
        return !isLookupField(field->fieldType) && field->fieldType != FieldDataType::multiselectlookup;
    });
    return fields;
}

std::vector<const Metadata*> FieldList::getAllDateAndDateTimeFields() const {
    auto fields = allFields();
    std::erase_if(fields, [](auto* field) { return !isDate(field->fieldType); });
    return fields;
}

}  // namespace tarvo
