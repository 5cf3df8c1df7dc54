#include "tarvobase/value_objects/field/MetadataInfoContract.h"

#include <algorithm>

namespace tarvo {

namespace {

template <class Items, class Matches>
auto firstWhere(const Items& items, Matches&& matches) -> decltype(&*items.begin()) {
    auto found = std::find_if(items.begin(), items.end(), matches);
    return found == items.end() ? nullptr : &*found;
}

}  // namespace

PicklistsByIdentifier picklistsByIdentifier(std::vector<PicklistMetadata> picklists, const FieldIdentifier& naming) {
    PicklistsByIdentifier groups;
    for (auto& row : picklists) {
        auto& group = groups[row.*naming.picklistIdentifierPath];
        group.push_back(std::move(row));
    }
    return groups;
}

const Metadata* MetadataInfoContract::getFieldByApiName(const std::string& apiName) const {
    auto fields = allFields();
    auto found = firstWhere(fields, [&](auto* field) { return field->fieldAPIName == apiName; });
    return found ? *found : nullptr;
}

std::vector<const Metadata*> MetadataInfoContract::getAllFields(DisplayMode with) const {
    auto fields = allFields();
    std::erase_if(fields, [&](auto* field) { return !field->displayMode().contains(with); });
    return fields;
}

std::vector<const Metadata*> MetadataInfoContract::getFields(FieldDataType type) const {
    auto fields = allFields();
    std::erase_if(fields, [&](auto* field) { return field->fieldType != type; });
    return fields;
}

const std::vector<PicklistMetadata>& MetadataInfoContract::getPicklistByApiName(const std::string& apiName) const {
    auto field = getFieldByApiName(apiName);
    return field ? getPicklist(*field) : picklistIn({}, "");
}

const PicklistMetadata* MetadataInfoContract::getPicklistByActualValue(const Metadata& field,
                                                                       std::string_view actualValue) const {
    return firstWhere(getPicklist(field), [&](auto& row) { return row.fieldActualValue == actualValue; });
}
const PicklistMetadata* MetadataInfoContract::getPicklistByDisplayValue(const Metadata& field,
                                                                        std::string_view displayValue) const {
    return firstWhere(getPicklist(field), [&](auto& row) { return row.fieldOptionalValue == displayValue; });
}

const std::vector<PicklistMetadata>& MetadataInfoContract::picklistIn(const PicklistsByIdentifier& picklists,
                                                                      const std::string& identifier) {
    static const std::vector<PicklistMetadata> none;
    auto found = picklists.find(identifier);
    return found == picklists.end() ? none : found->second;
}

}  // namespace tarvo
