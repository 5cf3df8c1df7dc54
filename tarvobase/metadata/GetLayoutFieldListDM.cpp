#include "tarvobase/metadata/GetLayoutFieldListDM.h"

#include <algorithm>
#include <set>
#include <tuple>

#include "platform/Log.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/storage/InMemoryStorage.h"
#include "tarvobase/value_objects/layout/SubformLayout.h"

namespace tarvo {

namespace {

using LayoutRows = LayoutRowsDM::LayoutRows;
using LayoutsByModule = std::map<std::string, LayoutRowsDM::LayoutRowsResult>;

std::vector<std::string> moduleNamesOf(const ModuleFieldsMap& moduleFieldsMap) {
    std::vector<std::string> names;
    for (auto& [name, fields] : moduleFieldsMap) names.push_back(name);
    std::sort(names.begin(), names.end());
    return names;
}

LayoutRows byLayout(LayoutRowsDM::Rows rows, std::optional<DisplayMode> mode) {
    LayoutRows layouts;
    for (auto& row : rows) {
        auto& layout = layouts[row.layoutID];
        if (!mode || row.displayMode().contains(*mode)) layout.push_back(std::move(row));
    }
    return layouts;
}

void logAndDropEmpty(LayoutRows& layouts) {
    std::erase_if(layouts, [](auto& layout) {
        if (layout.second.empty())
            platform::log(platform::LogLevel::warning, "metadata", "layout-metadata not found for `" + layout.first);
        return layout.second.empty();
    });
}

void sortForDisplay(LayoutRowsDM::Rows& rows) {
    std::stable_sort(rows.begin(), rows.end(), [](const LayoutMetadata& a, const LayoutMetadata& b) {
        return std::tie(a.sectionSequence, a.fieldPosition, a.fieldAPIName) <
               std::tie(b.sectionSequence, b.fieldPosition, b.fieldAPIName);
    });
}

template <class Visit>
void forEachRow(auto& layoutsByModule, Visit&& visit) {
    for (auto& [moduleName, layouts] : layoutsByModule)
        if (layouts)
            for (auto& [id, rows] : layouts.value())
                for (auto& row : rows) visit(moduleName, id, row);
}

/// Returns modules by API name. A module that cannot be read has no entry.
std::map<std::string, Module> modulesByApiName(ModulesPersistanceDelegate& store,
                                               const std::set<std::string>& apiNames) {
    std::map<std::string, Module> modules;
    if (apiNames.empty()) return modules;
    auto found = store.getModulesByApiNames({apiNames.begin(), apiNames.end()});
    if (!found) return modules;
    for (auto& module : found.value()) {
        auto apiName = module.apiName;
        modules.emplace(std::move(apiName), std::move(module));
    }
    return modules;
}

}  // namespace

LayoutStores LayoutStores::over(std::shared_ptr<DatabaseAdapter> databaseAdapter) {
    auto stores = Stores::over(databaseAdapter);
    return {stores.layoutFields(), stores.picklists(), stores.modules(),
            FieldListAssembler::getFieldListDM(databaseAdapter)};
}

LayoutsByModule LayoutRowsDM::getLayoutMetadata(const ModuleFieldsMap& moduleFieldsMap,
                                                std::optional<DisplayMode> mode) const {
    LayoutsByModule layoutsByModule;
    for (auto& [name, fields] : moduleFieldsMap) layoutsByModule.emplace(name, MetadataError::notFound);
    if (layoutsByModule.empty()) return layoutsByModule;
    auto stored = metadataDAO->getLayoutMetadata(moduleFieldsMap, {});
    if (!stored) return layoutsByModule;
    for (auto& [name, rows] : *stored) {
        auto entry = layoutsByModule.find(name);
        if (entry == layoutsByModule.end() || rows.empty()) continue;
        auto layouts = byLayout(std::move(rows), mode);
        logAndDropEmpty(layouts);
        for (auto& [id, layoutRows] : layouts) sortForDisplay(layoutRows);
        entry->second = std::move(layouts);
    }
    fillLookups(layoutsByModule);
    return layoutsByModule;
}

// The modules of all lookups are read at once, and then their fields: a layout may hold dozens of lookups.
void LayoutRowsDM::fillLookups(LayoutsByModule& layouts) const {
    std::set<std::string> named, apiNames;
    forEachRow(layouts, [&](auto&, auto&, const LayoutMetadata& row) {
        if (row.fieldType == FieldDataType::lookup && !row.lookupModule.empty()) named.insert(row.lookupModule);
    });
    for (auto& name : named) apiNames.insert(ModuleIdentifier::fromModuleName(name).rawValue());
    auto modules = modulesByApiName(*modulePersistance, apiNames);
    std::vector<std::string> moduleNames;
    for (auto& [apiName, module] : modules) moduleNames.push_back(module.moduleName);
    auto fieldLists = metadataPersistance->getFields(moduleNames);

    forEachRow(layouts, [&](auto&, auto&, LayoutMetadata& row) {
        if (row.fieldType != FieldDataType::lookup) return;
        auto module = modules.find(row.lookupModule);
        LayoutMetadata::LookupData::Lookup lookup{{std::nullopt}, {std::nullopt}};
        if (module != modules.end()) {
            lookup.modules.front() = module->second;
            lookup.fields.front() = fieldLists.at(module->second.moduleName).success();
        }
        row.addData = LayoutMetadata::LookupData{std::move(lookup)};
    });
}

std::map<std::string, LayoutRowsDM::PicklistsByLayout> LayoutRowsDM::picklists(
    const ModuleFieldsMap& moduleFieldsMap) const {
    std::map<std::string, PicklistsByLayout> byModule;
    if (moduleFieldsMap.empty()) return byModule;
    auto stored = pickListDAO->getPicklistMetadataByModuleNames(moduleNamesOf(moduleFieldsMap));
    if (!stored) return byModule;
    for (auto& [name, rows] : *stored)
        for (auto& row : rows) {
            auto layoutID = row.layoutID;
            byModule[name][layoutID].push_back(std::move(row));
        }
    return byModule;
}

// A layout names the module of a subform by its API name; screens find modules by their own names.
std::map<std::string, LayoutRowsDM::SubformsByLayout> LayoutRowsDM::subforms(
    const LayoutsByModule& layouts, const ModuleFieldsMap& moduleFieldsMap) const {
    std::set<std::string> apiNames;
    forEachRow(layouts, [&](auto&, auto&, const LayoutMetadata& row) {
        if (auto subform = SubformLayoutMetadata::of(row)) apiNames.insert(subform->moduleAPIName);
    });
    auto modules = modulesByApiName(*modulePersistance, apiNames);

    std::map<std::string, SubformsByLayout> byModule;
    forEachRow(layouts, [&](const std::string& moduleName, const std::string& layoutId, const LayoutMetadata& row) {
        auto subform = SubformLayoutMetadata::of(row);
        if (!subform) return;
        auto module = modules.find(subform->moduleAPIName);
        byModule[moduleName][layoutId].try_emplace(
            row.fieldIdentifier(moduleFieldsMap.at(moduleName).naming()),
            SubformMetadata{.layoutID = subform->layoutID,
                            .moduleName = module == modules.end() ? subform->moduleAPIName : module->second.moduleName,
                            .maxRow = subform->maximumRows,
                            .canReorderRow = subform->canReorderRows});
    });
    return byModule;
}

std::shared_ptr<GetLinearLayoutFieldListDM> GetLinearLayoutFieldListDMA::getLinearLayoutFieldListDM(
    std::shared_ptr<DatabaseAdapter> databaseAdapter) {
    return std::make_shared<GetLinearLayoutFieldListDM>(LayoutStores::over(std::move(databaseAdapter)));
}
std::shared_ptr<GetGroupedLayoutFieldListDM> GetGroupedLayoutFieldListDMA::getGroupedLayoutFieldListDM(
    std::shared_ptr<DatabaseAdapter> databaseAdapter) {
    return std::make_shared<GetGroupedLayoutFieldListDM>(LayoutStores::over(std::move(databaseAdapter)));
}
std::shared_ptr<GetOrderedLayoutFieldListDM> GetOrderedLayoutFieldListDMA::getOrderedLayoutFieldListDM(
    std::shared_ptr<DatabaseAdapter> databaseAdapter) {
    return std::make_shared<GetOrderedLayoutFieldListDM>(LayoutStores::over(std::move(databaseAdapter)));
}

}  // namespace tarvo
