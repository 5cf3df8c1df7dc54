#pragma once

#include <string>
#include <vector>

#include "platform/Object.h"
#include "platform/Result.h"
#include "tarvobase/network_layer/ParserError.h"
#include "tarvobase/value_objects/module/Module.h"

namespace tarvo {

/// The store of modules. Reads fail with `ParserError::noData` when there is no such module or the store cannot be
/// read. Writes return whether they were stored. Any thread may use it.
class ModulesPersistanceDelegate : public virtual platform::Object {
public:
    virtual bool storeModule(const Module& module) = 0;
    virtual bool storeModules(const std::vector<Module>& modules) = 0;
    /// Returns all modules in no particular order. The list is empty if the table is.
    virtual Result<std::vector<Module>, ParserError> getAllModules() = 0;
    Result<Module, ParserError> getModule(const ModuleIdentifier& identifier) {
        return getModuleByModuleName(identifier.rawValue());
    }
    virtual Result<Module, ParserError> getModuleByModuleName(const std::string& moduleName) = 0;
    virtual Result<Module, ParserError> getModuleByApiName(const std::string& apiName) = 0;
    virtual Result<std::vector<Module>, ParserError> getModulesByModuleNames(
        const std::vector<std::string>& moduleNames) = 0;
    virtual Result<std::vector<Module>, ParserError> getModulesByApiNames(const std::vector<std::string>& apiNames) = 0;
    virtual bool deleteModules(const std::vector<Module>& modules) = 0;
    /// Refreshes a store in memory from the store behind it. Does nothing for a table.
    virtual void reloadAll() = 0;
};

}  // namespace tarvo
