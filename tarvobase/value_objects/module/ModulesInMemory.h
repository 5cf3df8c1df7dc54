#pragma once

#include "tarvobase/storage/InMemoryPersistanceClass.h"
#include "tarvobase/value_objects/module/ModulesPersistanceDelegate.h"

namespace tarvo {

/// Keeps modules in memory, in front of the table of modules. Without a primary store a miss is `noData`.
class ModulesInMemory final : public InMemoryPersistanceClass, public ModulesPersistanceDelegate {
public:
    explicit ModulesInMemory(std::shared_ptr<InMemoryDatabaseAdapter> inMemoryPersistanceClass,
                             std::shared_ptr<ModulesPersistanceDelegate> primaryPersistance = nullptr,
                             ModuleConstants activeModuleConstants = {});

    const ModuleConstants activeModuleConstants;
    const std::shared_ptr<ModulesPersistanceDelegate> primaryPersistance;

    using ModulesPersistanceDelegate::getModule;
    bool storeModule(const Module& module) override { return storeModules({module}); }
    bool storeModules(const std::vector<Module>& modules) override;
    Result<std::vector<Module>, ParserError> getAllModules() override;
    Result<Module, ParserError> getModuleByModuleName(const std::string& moduleName) override;
    Result<Module, ParserError> getModuleByApiName(const std::string& apiName) override;
    Result<std::vector<Module>, ParserError> getModulesByModuleNames(
        const std::vector<std::string>& moduleNames) override;
    Result<std::vector<Module>, ParserError> getModulesByApiNames(const std::vector<std::string>& apiNames) override;
    bool deleteModules(const std::vector<Module>& modules) override;
    /// Refreshes memory from the primary store. If that fails, memory stays as it is.
    void reloadAll() override;

private:
    std::vector<Module> asStored(std::vector<Module> modules) const;

    InMemoryTable<Module> memory_;
};

}  // namespace tarvo
