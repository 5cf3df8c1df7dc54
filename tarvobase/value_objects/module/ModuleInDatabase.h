#pragma once

#include "tarvobase/storage/DatabasePersistanceClass.h"
#include "tarvobase/value_objects/module/ModulesPersistanceDelegate.h"

namespace tarvo {

/// The table of modules.
class ModuleInDatabase final : public DatabasePersistanceClass, public ModulesPersistanceDelegate {
public:
    ModuleInDatabase(std::string tableName, std::shared_ptr<DatabaseAdapter> databaseAdapter,
                     ModuleDatabaseConstants databaseConstants = {});

    using ModulesPersistanceDelegate::getModule;
    bool storeModule(const Module& module) override { return storeModules({module}); }
    /// Stores the modules. A module without table statements keeps the stored ones.
    bool storeModules(const std::vector<Module>& modules) override;
    Result<std::vector<Module>, ParserError> getAllModules() override;
    Result<Module, ParserError> getModuleByModuleName(const std::string& moduleName) override;
    Result<Module, ParserError> getModuleByApiName(const std::string& apiName) override;
    Result<std::vector<Module>, ParserError> getModulesByModuleNames(
        const std::vector<std::string>& moduleNames) override;
    Result<std::vector<Module>, ParserError> getModulesByApiNames(const std::vector<std::string>& apiNames) override;
    bool deleteModules(const std::vector<Module>& modules) override;
    void reloadAll() override {}

private:
    std::optional<std::vector<Module>> modulesWhere(std::string_view column,
                                                    const std::vector<std::string>& values) const;
    std::optional<std::vector<Module>> modulesOf(const std::optional<Rows>& rows) const;

    ModuleDatabaseConstants databaseConstants_;
};

}  // namespace tarvo
