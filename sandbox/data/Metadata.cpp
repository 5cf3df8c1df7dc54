#include "sandbox/data/Metadata.h"

#include <algorithm>

#include "sandbox/data/DataSet.h"
#include "sandbox/data/FieldTable.h"

namespace tarvo::sandbox {
namespace {

// The API name "Closing_Date" gives the column CLOSINGDATE and the label "Closing Date".
std::string columnOf(std::string_view apiName) {
    std::string column;
    for (char c : apiName)
        if (c != '_') column += static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
    return column;
}

std::string labelOf(std::string_view apiName) {
    std::string label(apiName.starts_with("$") ? apiName.substr(1) : apiName);
    std::replace(label.begin(), label.end(), '_', ' ');
    return label;
}

int maxLengthOf(std::string_view type) {
    static constexpr std::pair<std::string_view, int> lengths[] = {
        {"text", 255},    {"textarea", 32000}, {"email", 100},   {"phone", 30},
        {"website", 450}, {"picklist", 120},   {"integer", 9},   {"bigint", 18},
        {"double", 16},   {"decimal", 16},     {"currency", 16}, {"multiselectpicklist", 2000},
        {"boolean", 5},   {"date", 20},        {"datetime", 32},
    };
    for (const auto& [name, length] : lengths)
        if (name == type) return length;
    return 0;
}

const ModuleData* moduleByApiName(const std::vector<ModuleData>& modules, std::string_view apiName) {
    auto found = std::find_if(modules.begin(), modules.end(),
                              [&](const ModuleData& module) { return module.apiName == apiName; });
    return found == modules.end() ? nullptr : &*found;
}

Value preferencesOf(const FieldRow& row, const std::vector<ModuleData>& modules) {
    if (row.type == "lookup") return row.target == "se_module" ? ValueList{} : ValueList{row.target};
    if (row.type == "currency")
        return ValueMap{{"decimal_place", "2"}, {"currency", ValueMap{{"rounding_option", "normal"}}}};
    if (row.type == "decimal" || row.type == "double") return ValueMap{{"decimal_place", "3"}};
    if (row.type == "autonumber")
        return ValueMap{{"auto_number", ValueMap{{"prefix", "N-"}, {"start_number", "1"}, {"suffix", ""}}}};
    if (row.type == "subform")
        if (const auto* module = moduleByApiName(modules, row.target))
            return ValueMap{{"subform", ValueList{module->id, module->apiName}}};
    return ValueMap{};
}

std::vector<PicklistValue> picklistOf(const FieldRow& row) {
    std::vector<PicklistValue> values;
    if (row.type != "picklist" && row.type != "multiselectpicklist") return values;
    for (const auto& entry : picklistRows())
        if (entry.picklist == row.target)
            values.push_back({std::string(entry.value), std::string(entry.label), std::string(entry.map)});
    return values;
}

FieldData makeField(const FieldRow& row, const std::vector<ModuleData>& modules, IdSequence& ids) {
    auto marked = [&](char mark) { return row.marks.find(mark) != std::string_view::npos; };
    FieldData field;
    field.id = ids.next();
    field.apiName = row.apiName;
    field.column = row.column.empty() ? columnOf(row.apiName) : std::string(row.column);
    field.label = labelOf(row.apiName);
    field.type = row.type;
    field.maxLength = maxLengthOf(row.type);
    field.isReadOnly = marked('r');
    field.isCustom = marked('c');
    field.isUnique = marked('u');
    field.isQuickCreate = marked('q');
    field.isKey = marked('k');
    field.isMandatory = marked('!');
    field.isUnsorted = marked('s');
    field.isVisible = !marked('h');
    if (row.type == "lookup" || row.type == "multiselectlookup") field.target = row.target;
    field.mode = marked('m') ? "" : field.isReadOnly ? "1" : "7";
    field.section = row.section;
    field.preferences = preferencesOf(row, modules);
    field.picklist = picklistOf(row);
    return field;
}

std::vector<std::string> sectionsOf(const std::vector<FieldData>& fields) {
    std::vector<std::string> sections;
    for (const auto& field : fields)
        if (!field.section.empty() && std::find(sections.begin(), sections.end(), field.section) == sections.end())
            sections.push_back(field.section);
    return sections;
}

// Leads have a second layout, with fewer sections in another order, and a third that the profile may not use.
std::vector<LayoutData> makeLayouts(std::string_view module, const std::vector<FieldData>& fields, IdSequence& ids) {
    auto sections = sectionsOf(fields);
    std::vector<LayoutData> layouts{{ids.next(), "Standard", true, true, sections}};
    if (module != "Leads") return layouts;
    auto fewer = sections;
    std::erase(fewer, "Money");
    std::reverse(fewer.begin() + 1, fewer.end());
    layouts.push_back({ids.next(), "Partner", true, false, fewer});
    layouts.push_back({ids.next(), "Internal", false, false, sections});
    return layouts;
}

std::vector<RelatedListData> makeRelatedLists(std::string_view module, IdSequence& ids) {
    std::vector<RelatedListData> lists;
    for (const auto& row : relatedListRows())
        if (row.module == module)
            lists.push_back({ids.next(), std::string(row.relatedModule), std::string(row.label),
                             std::string(row.listName), std::string(row.apiName), std::string(row.lookup)});
    return lists;
}

// A lookup knows the list that it fills in the module that it points to.
void connectLookups(MetadataByModule& metadata, const std::vector<ModuleData>& modules) {
    for (auto& [name, module] : metadata) {
        for (auto& field : module.fields) {
            const auto* target = moduleByApiName(modules, field.target);
            if (!target) continue;
            for (const auto& list : metadata[target->name].relatedLists)
                if (list.relatedModule == name && list.lookup == field.apiName) field.relatedListId = list.id;
        }
    }
}

}  // namespace

MetadataByModule makeMetadata(const std::vector<ModuleData>& modules, IdSequence& ids) {
    MetadataByModule metadata;
    for (const auto& module : modules) {
        auto& made = metadata[module.name];
        for (const auto& row : fieldRows(module.name)) made.fields.push_back(makeField(row, modules, ids));
        made.layouts = makeLayouts(module.name, made.fields, ids);
        made.relatedLists = makeRelatedLists(module.name, ids);
        for (auto below : dependentModules(module.name)) made.dependents.emplace_back(below);
    }
    connectLookups(metadata, modules);
    return metadata;
}

}  // namespace tarvo::sandbox
