#include "tarvobase/value_objects/layout/LayoutFieldList.h"

namespace tarvo {

std::vector<const Metadata*> LayoutFieldList::allFields() const {
    auto fields = layoutFields();
    return {fields.begin(), fields.end()};
}

std::vector<const LayoutMetadata*> LayoutFieldList::getFieldsInSection(const std::string& name) const {
    auto fields = layoutFields();
    std::erase_if(fields, [&](auto* field) { return field->sectionName != name; });
    return fields;
}

const std::vector<PicklistMetadata>& LayoutFieldList::getPicklist(const Metadata& field) const {
    return picklistIn(fieldPicklists, field.fieldIdentifier(naming));
}

const SubformMetadata* LayoutFieldList::getSubformMetadata(const Metadata& field) const {
    auto found = subformInfo.find(field.fieldIdentifier(naming));
    return found == subformInfo.end() ? nullptr : &found->second;
}

std::optional<std::string> LayoutFieldList::getSubformLayoutId(const Metadata& field) const {
    auto subform = getSubformMetadata(field);
    return subform ? std::optional(subform->layoutID) : std::nullopt;
}

}  // namespace tarvo
