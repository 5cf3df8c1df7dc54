#include "tarvobase/value_objects/module/ModulesInMemory.h"

#include <algorithm>

#include "platform/Text.h"

namespace tarvo {

namespace {

using Modules = Result<std::vector<Module>, ParserError>;

}  // namespace

ModulesInMemory::ModulesInMemory(std::shared_ptr<InMemoryDatabaseAdapter> inMemoryPersistanceClass,
                                 std::shared_ptr<ModulesPersistanceDelegate> primaryPersistance,
                                 ModuleConstants activeModuleConstants)
    : InMemoryPersistanceClass(std::move(inMemoryPersistanceClass)),
      activeModuleConstants(activeModuleConstants),
      primaryPersistance(std::move(primaryPersistance)),
      memory_(
          *this, std::string(activeModuleConstants.TableName), [](const Module& module) { return module.moduleName; },
          this->primaryPersistance != nullptr) {}

bool ModulesInMemory::storeModules(const std::vector<Module>& modules) {
    std::vector<Module> stored;
    return memory_.store(stored, [&] {
        if (primaryPersistance && !primaryPersistance->storeModules(modules)) return false;
        stored = asStored(modules);
        return true;
    });
}

// The primary store keeps its table statements for a module that comes without them, so memory takes such a module from
// there.
std::vector<Module> ModulesInMemory::asStored(std::vector<Module> modules) const {
    std::vector<std::string> bare;
    for (auto& module : modules)
        if (module.tableCreationQuery.empty()) bare.push_back(module.moduleName);
    if (!primaryPersistance || bare.empty()) return modules;
    auto stored = primaryPersistance->getModulesByModuleNames(bare).success().value_or(std::vector<Module>());
    for (auto& module : modules)
        for (auto& known : stored)
            if (module.tableCreationQuery.empty() && known.moduleName == module.moduleName) module = known;
    return modules;
}

Modules ModulesInMemory::getAllModules() {
    return memory_.allOr(
        [&] { return primaryPersistance ? primaryPersistance->getAllModules() : Modules(ParserError::noData()); });
}

Result<Module, ParserError> ModulesInMemory::getModuleByModuleName(const std::string& moduleName) {
    return memory_.firstOr({{std::string(activeModuleConstants.ModuleName), moduleName}}, [&] {
        return primaryPersistance ? primaryPersistance->getModuleByModuleName(moduleName)
                                  : Result<Module, ParserError>(ParserError::noData());
    });
}

Result<Module, ParserError> ModulesInMemory::getModuleByApiName(const std::string& apiName) {
    return memory_.firstOr({{std::string(activeModuleConstants.APIName), apiName}}, [&] {
        return primaryPersistance ? primaryPersistance->getModuleByApiName(apiName)
                                  : Result<Module, ParserError>(ParserError::noData());
    });
}

Modules ModulesInMemory::getModulesByModuleNames(const std::vector<std::string>& moduleNames) {
    return memory_.chosenOr(
        moduleNames.size(), [&](const Module& module) { return text::contains(moduleNames, module.moduleName); },
        [&] {
            return primaryPersistance ? primaryPersistance->getModulesByModuleNames(moduleNames)
                                      : Modules(ParserError::noData());
        });
}

Modules ModulesInMemory::getModulesByApiNames(const std::vector<std::string>& apiNames) {
    return memory_.chosenOr(
        apiNames.size(), [&](const Module& module) { return text::contains(apiNames, module.apiName); },
        [&] {
            return primaryPersistance ? primaryPersistance->getModulesByApiNames(apiNames)
                                      : Modules(ParserError::noData());
        });
}

bool ModulesInMemory::deleteModules(const std::vector<Module>& modules) {
    std::vector<InMemoryDatabaseAdapter::ColumnValues> filters;
    for (auto& module : modules)
        filters.push_back({{std::string(activeModuleConstants.ModuleName), module.moduleName}});
    return memory_.remove(filters, [&] { return !primaryPersistance || primaryPersistance->deleteModules(modules); });
}

void ModulesInMemory::reloadAll() {
    if (!primaryPersistance) return;
    auto since = memory_.now();
    if (auto modules = primaryPersistance->getAllModules())
        memory_.fill(since, *modules, InMemoryTable<Module>::Extent::whole);
}

}  // namespace tarvo
