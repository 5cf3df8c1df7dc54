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

/// Reads modules with their fields, permissions and settings. A module without fields is not found; a module without
/// permissions or settings has empty lists. A call takes one query each for modules, permissions, fields, picklists and
/// settings, however many modules it names, and fewer if memory holds them. Blocks its caller; may be called from any
/// thread.
class GetModuleInfoDataManager final : public platform::Object {
public:
    using ModuleInfoResult = Result<ModuleInfo, MetadataError>;
    /// Holds one entry per requested name: `notFound` if it is not a module or has no fields.
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
    /// The result is keyed by API name.
    ModuleInfos getModuleInfosByModuleApiNames(const std::vector<std::string>& moduleApiNames) const;
    /// The result is keyed by module name.
    ModuleInfos getModuleInfos(const std::vector<Module>& modules) const;
    /// Passes all modules of the account to `callback`, keyed by module name, before it returns. The map is empty if
    /// modules cannot be read.
    void getmoduleInfo(const std::function<void(const ModuleInfos&)>& callback) const;

private:
    std::vector<ModuleInfo> infosOf(std::vector<Module> modules) const;
    template <class AskModules>
    ModuleInfos namedInfos(const std::vector<std::string>& names, std::string Module::*key, AskModules ask) const;
};

/// Builds a `GetModuleInfoDataManager` over the tables of an adapter, with memory in front of modules and settings.
struct GetModuleInfoDMA {
    /// `userDefaults` is not used at present.
    static std::shared_ptr<GetModuleInfoDataManager> getModuleInfoDM(
        std::shared_ptr<DatabaseAdapter> databaseAdapter,
        std::shared_ptr<InMemoryDatabaseAdapter> inMemoryDatabaseAdapter,
        std::shared_ptr<UserDefaultsProtocol> userDefaults = nullptr);
};
struct GetModuleInfoAssembler {
    /// Uses the database that is open at this moment.
    static std::shared_ptr<GetModuleInfoDataManager> getModuleInfoDM();
};

}  // namespace tarvo
