#include "tarvobase/metadata/GetFieldListDM.h"

#include <span>

#include "platform/Text.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/metadata/Stores.h"

namespace tarvo {

namespace {

using Picklist = PicklistMetadataPersistanceDelegate::Picklist;
const std::string activitiesModule = "Activities";
using PicklistsByModule = std::unordered_map<std::string, Picklist>;

/// Returns the modules whose picklists supply the values of a module's fields. "Activities" has no rows of its own,
/// because it shows the records of the three modules.
std::vector<std::string> picklistModules(const std::string& moduleName) {
    if (moduleName == activitiesModule) return {"Calls", "Events", "Tasks"};
    return {moduleName};
}

PicklistsByModule readPicklists(PicklistMetadataPersistanceDelegate& store, std::span<const std::string> moduleNames) {
    std::vector<std::string> asked;
    for (auto& name : moduleNames)
        for (auto& source : picklistModules(name))
            if (!text::contains(asked, source)) asked.push_back(std::move(source));
    return store.getPicklistMetadataByModuleNames(asked).value_or(PicklistsByModule());
}

/// Takes the rows of a module out of the map. "Activities" gets copies, so it must be taken first.
Picklist takePicklist(const std::string& moduleName, PicklistsByModule& picklists) {
    auto sources = picklistModules(moduleName);
    if (sources.size() == 1) return std::move(picklists[moduleName]);
    Picklist joined;
    for (auto& source : sources)
        if (auto rows = picklists.find(source); rows != picklists.end())
            joined.insert(joined.end(), rows->second.begin(), rows->second.end());
    return joined;
}

struct KeptFieldList {
    FieldList list;  // knows its module and its naming
    bool isWhole;
};

// What `FieldListMemory` keeps.
thread_local int fieldListMemories = 0;
thread_local std::vector<KeptFieldList> keptFieldLists;

const FieldList* keptFieldList(const std::string& moduleName, const std::optional<std::vector<std::string>>& columns,
                               const FieldIdentifier& naming) {
    for (auto& [list, isWhole] : keptFieldLists)
        if (list.moduleName() == moduleName && list.naming() == naming &&
            (isWhole || (columns && list.hasFields(*columns))))
            return &list;
    return nullptr;
}

}  // namespace

FieldListMemory::FieldListMemory() { ++fieldListMemories; }
FieldListMemory::~FieldListMemory() {
    if (--fieldListMemories == 0) keptFieldLists.clear();
}

GetFieldListDM::FieldListResult GetFieldListDM::getFields(const std::string& moduleName,
                                                          const std::optional<std::vector<std::string>>& columnList,
                                                          const std::vector<FieldSort>& sortList) const {
    auto naming = namingInForce();
    auto fields = fieldPersistence->getFieldMetadata(moduleName, columnList, sortList);
    if (!fields) return fields.error();
    auto picklists = readPicklists(*pickListPersistence, std::span(&moduleName, 1));
    return FieldList(moduleName, *std::move(fields), takePicklist(moduleName, picklists), naming);
}

GetFieldListDM::FieldListResult GetFieldListDM::getFieldsWithoutPicklists(
    const std::string& moduleName, const std::optional<std::vector<std::string>>& columnList) const {
    auto naming = namingInForce();
    if (auto kept = keptFieldList(moduleName, columnList, naming)) return *kept;
    auto fields = fieldPersistence->getFieldMetadata(moduleName, columnList, {});
    if (!fields && columnList) return getFieldsWithoutPicklists(moduleName, std::nullopt);
    if (!fields) return fields.error();
    FieldList list(moduleName, *std::move(fields), {}, naming);
    if (fieldListMemories > 0) keptFieldLists.push_back({list, !columnList});
    return list;
}

GetFieldListDM::FieldListsByModule GetFieldListDM::getFields(const std::vector<std::string>& moduleNames,
                                                             const std::vector<FieldSort>& sort) const {
    FieldListsByModule lists;
    for (auto& name : moduleNames) lists.emplace(name, MetadataError::notFound);
    if (lists.empty()) return lists;
    auto naming = namingInForce();
    auto fields = fieldPersistence->getFieldMetadataByModuleNames(moduleNames, sort);
    if (!fields) return lists;
    auto picklists = readPicklists(*pickListPersistence, moduleNames);
    auto build = [&](const std::string& name, std::vector<FieldMetadata>& found) {
        if (auto list = lists.find(name); list != lists.end() && !found.empty())
            list->second = FieldList(name, std::move(found), takePicklist(name, picklists), naming);
    };
    auto& byModule = fields.value();
    if (auto activities = byModule.find(activitiesModule); activities != byModule.end())
        build(activitiesModule, activities->second);
    for (auto& [name, found] : byModule)
        if (name != activitiesModule) build(name, found);
    return lists;
}

std::shared_ptr<GetFieldListDM> FieldListAssembler::getFieldListDM(std::shared_ptr<DatabaseAdapter> databaseAdapter) {
    auto stores = Stores::over(std::move(databaseAdapter));
    return std::make_shared<GetFieldListDM>(stores.picklists(), stores.fields());
}

}  // namespace tarvo
