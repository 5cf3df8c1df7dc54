#include "tarvobase/value_objects/layout/LayoutFieldLists.h"

namespace tarvo {

void OrderedLayoutFieldList::add(LayoutMetadata row) {
    auto identifier = row.fieldIdentifier(naming);
    if (!orderedFields.contains(identifier)) orderedFields.set(identifier, std::move(row));
}

const LayoutMetadata* OrderedLayoutFieldList::getField(const std::string& identifier) const {
    return orderedFields.find(identifier);
}

std::vector<const LayoutMetadata*> OrderedLayoutFieldList::layoutFields() const {
    std::vector<const LayoutMetadata*> all;
    all.reserve(orderedFields.count());
    for (auto [identifier, row] : orderedFields) all.push_back(&row);
    return all;
}

void GroupedLayoutFieldList::openSection(const LayoutMetadata& first) {
    sectionsIndexMap.try_emplace(first.sectionName, sections.size());
    sections.push_back({first.sectionName, first.sectionDV, first.sectionSequence, first.isSubformSection, {}});
}

void GroupedLayoutFieldList::add(LayoutMetadata row) {
    auto& fields = sections.back().fields;
    fieldIdentifierMap.try_emplace(row.fieldIdentifier(naming), Place{sections.size() - 1, fields.size()});
    fields.push_back(std::move(row));
}

const GroupedLayoutSection* GroupedLayoutFieldList::getSection(const std::string& name) const {
    auto found = sectionsIndexMap.find(name);
    return found == sectionsIndexMap.end() ? nullptr : &sections[found->second];
}

const LayoutMetadata* GroupedLayoutFieldList::getField(const std::string& identifier) const {
    auto found = fieldIdentifierMap.find(identifier);
    if (found == fieldIdentifierMap.end()) return nullptr;
    return &sections[found->second.section].fields[found->second.field];
}

std::vector<const LayoutMetadata*> GroupedLayoutFieldList::layoutFields() const {
    std::vector<const LayoutMetadata*> all;
    for (auto& section : sections)
        for (auto& row : section.fields) all.push_back(&row);
    return all;
}

std::string LinearLayoutItem::debugDescription() const {
    if (auto header = section())
        return "Heading: " + header->name + " (" + header->displayLabel + ", " + std::to_string(header->sequence) + ")";
    return "Item: " + metadata()->fieldAPIName + " (" + metadata()->columnCRMName + ", " +
           std::to_string(metadata()->fieldPosition) + ")";
}

void LinearLayoutFieldList::openSection(const LayoutMetadata& first) {
    sectionIdentifierMap.try_emplace(first.sectionName, fields.size());
    fields.push_back(
        LinearLayoutItem::header({first.sectionName, first.sectionDV, first.sectionSequence, first.isSubformSection}));
}

void LinearLayoutFieldList::add(LayoutMetadata row) {
    fieldIdentifierMap.try_emplace(row.fieldIdentifier(naming), fields.size());
    fields.push_back(LinearLayoutItem::item(std::move(row)));
}

std::vector<LinearLayoutSection> LinearLayoutFieldList::allSections() const {
    std::vector<LinearLayoutSection> sections;
    for (auto& item : fields)
        if (auto section = item.section()) sections.push_back(*section);
    return sections;
}

const LinearLayoutSection* LinearLayoutFieldList::getSection(const std::string& name) const {
    auto found = sectionIdentifierMap.find(name);
    return found == sectionIdentifierMap.end() ? nullptr : fields[found->second].section();
}

const LayoutMetadata* LinearLayoutFieldList::getField(const std::string& identifier) const {
    auto found = fieldIdentifierMap.find(identifier);
    return found == fieldIdentifierMap.end() ? nullptr : fields[found->second].metadata();
}

std::vector<const LayoutMetadata*> LinearLayoutFieldList::layoutFields() const {
    std::vector<const LayoutMetadata*> all;
    for (auto& item : fields)
        if (auto row = item.metadata()) all.push_back(row);
    return all;
}

}  // namespace tarvo
