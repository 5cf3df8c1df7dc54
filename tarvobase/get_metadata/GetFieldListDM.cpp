#include "tarvobase/get_metadata/GetFieldListDM.h"

#include <algorithm>
#include <span>

#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/value_objects/FieldMetadataInDatabase.h"
#include "tarvobase/value_objects/PicklistMetadataInDatabase.h"

namespace tarvo {

namespace {

using Picklist = PicklistMetadataPersistanceDelegate::Picklist;
using PicklistsByModule = std::unordered_map<std::string, Picklist>;

/// The modules whose picklists a module's fields take their values from. "Activities" has no rows of its own: it shows
/// the records of the three.
std::vector<std::string> picklistModules(const std::string& moduleName) {
    if (moduleName == "Activities") return {"Calls", "Events", "Tasks"};
    return {moduleName};
}

PicklistsByModule readPicklists(PicklistMetadataPersistanceDelegate& store, std::span<const std::string> moduleNames) {
    std::vector<std::string> asked;
    for (auto& name : moduleNames)
        for (auto& source : picklistModules(name))
            if (std::find(asked.begin(), asked.end(), source) == asked.end()) asked.push_back(std::move(source));
    return store.getPicklistMetadataByModuleNames(asked).value_or(PicklistsByModule());
}

Picklist picklistOf(const std::string& moduleName, const PicklistsByModule& picklists) {
    Picklist joined;
    for (auto& source : picklistModules(moduleName))
        if (auto rows = picklists.find(source); rows != picklists.end())
            joined.insert(joined.end(), rows->second.begin(), rows->second.end());
    return joined;
}

}  // namespace

GetFieldListDM::FieldListResult GetFieldListDM::getFields(const std::string& moduleName,
                                                          const std::optional<std::vector<std::string>>& columnList,
                                                          const std::vector<FieldSort>& sortList) const {
    auto naming = CommonConfigration::sharedInstance().fieldIdentifier.get();
    auto fields = fieldPersistence->getFieldMetadata(moduleName, columnList, sortList);
    if (!fields) return fields.error();
    auto picklists = readPicklists(*pickListPersistence, std::span(&moduleName, 1));
    return FieldList(moduleName, *std::move(fields), picklistOf(moduleName, picklists), naming);
}

GetFieldListDM::FieldListsByModule GetFieldListDM::getFields(const std::vector<std::string>& moduleNames,
                                                             const std::vector<FieldSort>& sort) const {
    FieldListsByModule lists;
    for (auto& name : moduleNames) lists.emplace(name, MetadataError::notFound);
    if (lists.empty()) return lists;
    auto naming = CommonConfigration::sharedInstance().fieldIdentifier.get();
    auto fields = fieldPersistence->getFieldMetadataByModuleNames(moduleNames, sort);
    if (!fields) return lists;
    auto picklists = readPicklists(*pickListPersistence, moduleNames);
    for (auto& [name, found] : fields.value())
        if (auto list = lists.find(name); list != lists.end() && !found.empty())
            list->second = FieldList(name, std::move(found), picklistOf(name, picklists), naming);
    return lists;
}

std::shared_ptr<GetFieldListDM> FieldListAssembler::getFieldListDM(std::shared_ptr<DatabaseAdapter> databaseAdapter) {
    FieldMetadataDatabaseConstants constants;
    return std::make_shared<GetFieldListDM>(
        std::make_shared<PicklistMetadataInDatabase>(),
        std::make_shared<FieldMetadataInDatabase>(std::string(constants.TableName), std::move(databaseAdapter),
                                                  constants));
}

}  // namespace tarvo
