#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/Object.h"
#include "platform/Result.h"
#include "tarvobase/metadata/GetFieldListDM.h"
#include "tarvobase/metadata/ModuleInfo.h"
#include "tarvobase/value_objects/module/ModulePermissionsPersistanceDelegate.h"
#include "tarvobase/value_objects/module/ModulesPersistanceDelegate.h"
#include "tarvobase/value_objects/module/SettingsPersistanceDelegate.h"

namespace tarvo {

class DatabaseAdapter;
class InMemoryDatabaseAdapter;
class UserDefaultsProtocol;

/// Reads modules with their fields, permissions and settings. A module without fields cannot be told; one without
/// permissions or settings has empty lists. However many modules are asked for, it takes one query each for modules,
/// permissions, fields, picklists and settings, fewer where memory knows. Blocks its caller; from any thread.
class GetModuleInfoDataManager final : public platform::Object {
public:
    using ModuleInfoResult = Result<ModuleInfo, MetadataError>;
    /// An entry a name that was asked for; `notFound` for one that is no module or cannot be told.
    using ModuleInfos = std::map<std::string, ModuleInfoResult>;

    struct Stores {
        std::shared_ptr<ModulesPersistanceDelegate> modulePersistance;
        std::shared_ptr<ModulePermissionsPersistanceDelegate> permissionPersistance;
        std::shared_ptr<GetFieldListDM> metadataDataManager;
        std::shared_ptr<SettingsPersistanceDelegate> settingPersistence;
    };
    explicit GetModuleInfoDataManager(Stores stores) : stores(std::move(stores)) {}

    const Stores stores;

    ModuleInfoResult getModuleInfo(const std::string& moduleName) const;
    ModuleInfos getModuleInfosByModuleNames(const std::vector<std::string>& moduleNames) const;
    /// By API name.
    ModuleInfos getModuleInfosByModuleApiNames(const std::vector<std::string>& moduleApiNames) const;
    /// By module name.
    ModuleInfos getModuleInfos(const std::vector<Module>& modules) const;
    /// All modules of the account by module name, told before it returns; empty when modules cannot be read.
    void getmoduleInfo(const std::function<void(const ModuleInfos&)>& callback) const;

private:
    std::vector<ModuleInfo> infosOf(std::vector<Module> modules) const;
    template <class AskModules>
    ModuleInfos namedInfos(const std::vector<std::string>& names, std::string Module::*key, AskModules ask) const;
};

/// Build it over the tables of an adapter with memory in front of modules and settings.
struct GetModuleInfoDMA {
    /// Nothing of it is kept in the settings store at present.
    static std::shared_ptr<GetModuleInfoDataManager> getModuleInfoDM(
        std::shared_ptr<DatabaseAdapter> databaseAdapter,
        std::shared_ptr<InMemoryDatabaseAdapter> inMemoryDatabaseAdapter,
        std::shared_ptr<UserDefaultsProtocol> userDefaults = nullptr);
};
struct GetModuleInfoAssembler {
    /// Over the database that is open at this moment.
    static std::shared_ptr<GetModuleInfoDataManager> getModuleInfoDM();
};

}  // namespace tarvo
