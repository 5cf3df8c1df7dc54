#include "tarvobase/metadata/GetModuleInfoDataManager.h"

#include <set>

#include "tarvobase/metadata/Stores.h"

namespace tarvo {

namespace {

using ModuleInfos = GetModuleInfoDataManager::ModuleInfos;
using Modules = Result<std::vector<Module>, ParserError>;

ModuleInfos convertToDictResult(std::vector<ModuleInfo> infos, std::string Module::*key, ModuleInfos asked) {
    for (auto& info : infos) {
        auto name = info.module.*key;
        asked.insert_or_assign(std::move(name), std::move(info));
    }
    return asked;
}

ModuleInfos notFound(const auto& names) {
    ModuleInfos infos;
    for (auto& name : names) infos.emplace(name, MetadataError::notFound);
    return infos;
}

std::vector<std::string> namesOf(const std::vector<Module>& modules) {
    std::vector<std::string> names;
    for (auto& module : modules) names.push_back(module.moduleName);
    return names;
}

}  // namespace

GetModuleInfoDataManager::ModuleInfoResult GetModuleInfoDataManager::getModuleInfo(
    const std::string& moduleName) const {
    return std::move(getModuleInfosByModuleNames({moduleName}).at(moduleName));
}

ModuleInfos GetModuleInfoDataManager::getModuleInfosByModuleNames(const std::vector<std::string>& moduleNames) const {
    return namedInfos(moduleNames, &Module::moduleName, [&](const std::vector<std::string>& names) {
        return stores.modulePersistance->getModulesByModuleNames(names);
    });
}

ModuleInfos GetModuleInfoDataManager::getModuleInfosByModuleApiNames(
    const std::vector<std::string>& moduleApiNames) const {
    return namedInfos(moduleApiNames, &Module::apiName, [&](const std::vector<std::string>& names) {
        return stores.modulePersistance->getModulesByApiNames(names);
    });
}

ModuleInfos GetModuleInfoDataManager::getModuleInfos(const std::vector<Module>& modules) const {
    return convertToDictResult(infosOf(modules), &Module::moduleName, notFound(namesOf(modules)));
}

void GetModuleInfoDataManager::getmoduleInfo(const std::function<void(const ModuleInfos&)>& callback) const {
    auto modules = stores.modulePersistance->getAllModules();
    callback(modules ? getModuleInfos(*modules) : ModuleInfos());
}

// A name that is given twice is requested once, so that memory can answer it.
template <class AskModules>
ModuleInfos GetModuleInfoDataManager::namedInfos(const std::vector<std::string>& names, std::string Module::*key,
                                                 AskModules ask) const {
    std::set<std::string> distinct(names.begin(), names.end());
    if (distinct.empty()) return {};
    Modules modules = ask({distinct.begin(), distinct.end()});
    if (!modules) return notFound(distinct);
    return convertToDictResult(infosOf(*std::move(modules)), key, notFound(distinct));
}

std::vector<ModuleInfo> GetModuleInfoDataManager::infosOf(std::vector<Module> modules) const {
    std::vector<ModuleInfo> infos;
    if (modules.empty()) return infos;
    auto names = namesOf(modules);
    auto permissions = stores.permissionPersistance->getModulePermissionsByModuleNames(names);
    auto fields = stores.metadataDataManager->getFields(names);
    std::string application(SettingsConstants::applicationModule);
    auto namesWithApplication = names;
    namesWithApplication.push_back(application);
    auto settings = stores.settingPersistence->getSettingsByModuleNames(namesWithApplication);
    auto ofApplication = SettingsList::heldByEveryModule(settings[application]);
    infos.reserve(modules.size());
    for (auto& module : modules) {
        auto& name = module.moduleName;
        auto& list = fields.at(name);
        if (!list) continue;
        PermissionList permission;
        if (permissions)
            if (auto found = permissions->find(name); found != permissions->end())
                permission.permissionList = found->second;
        infos.push_back({.module = module,
                         .metadata = *list,
                         .permission = std::move(permission),
                         .settings = {settings[name], ofApplication}});
    }
    return infos;
}

std::shared_ptr<GetModuleInfoDataManager> GetModuleInfoDMA::getModuleInfoDM(
    std::shared_ptr<DatabaseAdapter> databaseAdapter, std::shared_ptr<InMemoryDatabaseAdapter> inMemoryDatabaseAdapter,
    std::shared_ptr<UserDefaultsProtocol> userDefaults) {
    tarvo::Stores stores(Scope::over(databaseAdapter), std::move(inMemoryDatabaseAdapter), std::move(userDefaults));
    return std::make_shared<GetModuleInfoDataManager>(
        GetModuleInfoDataManager::Stores{.modulePersistance = stores.modules(),
                                         .permissionPersistance = stores.permissions(),
                                         .metadataDataManager = FieldListAssembler::getFieldListDM(databaseAdapter),
                                         .settingPersistence = stores.settings()});
}

std::shared_ptr<GetModuleInfoDataManager> GetModuleInfoAssembler::getModuleInfoDM() {
    auto stores = Stores::current();
    return GetModuleInfoDMA::getModuleInfoDM(stores.databaseAdapter(), stores.memory, stores.userDefaults);
}

}  // namespace tarvo
