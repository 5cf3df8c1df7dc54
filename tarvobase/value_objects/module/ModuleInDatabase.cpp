#include "tarvobase/value_objects/module/ModuleInDatabase.h"

#include <unordered_map>

namespace tarvo {

ModuleInDatabase::ModuleInDatabase(std::string tableName, std::shared_ptr<DatabaseAdapter> databaseAdapter,
                                   ModuleDatabaseConstants databaseConstants)
    : DatabasePersistanceClass(std::move(tableName), std::move(databaseAdapter)),
      databaseConstants_(databaseConstants) {}

bool ModuleInDatabase::storeModules(const std::vector<Module>& modules) {
    std::vector<std::string> bare;
    for (auto& module : modules)
        if (module.tableCreationQuery.empty()) bare.push_back(module.moduleName);
    std::unordered_map<std::string, std::string> statements;
    if (!bare.empty())
        for (auto& stored : modulesWhere(databaseConstants_.ModuleName, bare).value_or(std::vector<Module>()))
            statements[stored.moduleName] = stored.tableCreationQuery;

    std::vector<ValueMap> rows;
    rows.reserve(modules.size());
    for (auto module : modules) {
        if (module.tableCreationQuery.empty()) module.tableCreationQuery = statements[module.moduleName];
        rows.push_back(databaseConstants_.getDictionary(module));
    }
    return table().store(std::move(rows));
}

Result<std::vector<Module>, ParserError> ModuleInDatabase::getAllModules() {
    return presentOrNoData(modulesOf(table().fetchAll()));
}

Result<Module, ParserError> ModuleInDatabase::getModuleByModuleName(const std::string& moduleName) {
    return firstOrNoData(modulesWhere(databaseConstants_.ModuleName, {moduleName}));
}
Result<Module, ParserError> ModuleInDatabase::getModuleByApiName(const std::string& apiName) {
    return firstOrNoData(modulesWhere(databaseConstants_.APIName, {apiName}));
}
Result<std::vector<Module>, ParserError> ModuleInDatabase::getModulesByModuleNames(
    const std::vector<std::string>& moduleNames) {
    return filledOrNoData(modulesWhere(databaseConstants_.ModuleName, moduleNames));
}
Result<std::vector<Module>, ParserError> ModuleInDatabase::getModulesByApiNames(
    const std::vector<std::string>& apiNames) {
    return filledOrNoData(modulesWhere(databaseConstants_.APIName, apiNames));
}

bool ModuleInDatabase::deleteModules(const std::vector<Module>& modules) {
    if (modules.empty()) return true;
    std::vector<std::string> names;
    for (auto& module : modules) names.push_back(module.moduleName);
    return table().deleteObjects(columnIn(databaseConstants_.ModuleName, names));
}

std::optional<std::vector<Module>> ModuleInDatabase::modulesWhere(std::string_view column,
                                                                  const std::vector<std::string>& values) const {
    return modulesOf(table().fetch(FetchQuery(tableName, Criteria::in(std::string(column), valueList(values)))));
}

std::optional<std::vector<Module>> ModuleInDatabase::modulesOf(const std::optional<Rows>& rows) const {
    return table().valuesOf(rows, [this](const Row& row) { return databaseConstants_.getValue(row); });
}

}  // namespace tarvo
