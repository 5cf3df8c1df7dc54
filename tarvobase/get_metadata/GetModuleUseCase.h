#pragma once

#include <string>
#include <vector>

#include "tarvobase/usecase/DelegateUseCase.h"
#include "tarvobase/value_objects/module/ModulesPersistanceDelegate.h"

namespace tarvo {

/// Receives the answers of `GetModuleUseCase`, on the main queue.
class GetModuleUseCaseDelegate : public virtual platform::Object {
public:
    virtual void moduleFetched(const Module& module) { static_cast<void>(module); }
    /// The modules come in no particular order.
    virtual void modulesFetched(const std::vector<Module>& modules) { static_cast<void>(modules); }
    /// There is no such module, or no store. The list is empty if all modules were requested.
    virtual void unableToFetchModules(const std::vector<std::string>& moduleNames) { static_cast<void>(moduleNames); }
};

/// Reports modules from memory and the local database to a delegate.
class GetModuleUseCase final : public DelegateUseCase<GetModuleUseCaseDelegate> {
public:
    /// Uses the database that is open at this moment.
    GetModuleUseCase();
    explicit GetModuleUseCase(std::shared_ptr<ModulesPersistanceDelegate> dataManager)
        : dataManager(std::move(dataManager)) {}

    void getModule(const std::string& moduleName);
    void getModule(const ModuleIdentifier& identifier) { getModule(identifier.rawValue()); }
    void getAllModules();
    /// Fetches the modules with these names. Unknown names are left out; it is a failure if all are unknown.
    void getModulesWith(const std::vector<std::string>& moduleNames);

    const std::shared_ptr<ModulesPersistanceDelegate> dataManager;

private:
    template <class Read>
    void answerModules(std::vector<std::string> moduleNames, Read read);
};

}  // namespace tarvo
