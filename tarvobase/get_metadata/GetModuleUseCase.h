#pragma once

#include <string>
#include <vector>

#include "tarvobase/usecase/DelegateUseCase.h"
#include "tarvobase/value_objects/module/ModulesPersistanceDelegate.h"

namespace tarvo {

/// Hears the answers of `GetModuleUseCase`, on the main queue.
class GetModuleUseCaseDelegate : public virtual platform::Object {
public:
    virtual void moduleFetched(const Module& module) { static_cast<void>(module); }
    /// In no particular order.
    virtual void modulesFetched(const std::vector<Module>& modules) { static_cast<void>(modules); }
    /// There is no such module, or no store to ask. For all modules the list is empty.
    virtual void unableToFetchModules(const std::vector<std::string>& moduleNames) { static_cast<void>(moduleNames); }
};

/// Modules from memory and the local database, told to a delegate.
class GetModuleUseCase final : public DelegateUseCase<GetModuleUseCaseDelegate> {
public:
    /// Over the database that is open at this moment.
    GetModuleUseCase();
    explicit GetModuleUseCase(std::shared_ptr<ModulesPersistanceDelegate> dataManager)
        : dataManager(std::move(dataManager)) {}

    void getModule(const std::string& moduleName);
    void getModule(const ModuleIdentifier& identifier) { getModule(identifier.rawValue()); }
    void getAllModules();
    /// Those of the names that are modules; none at all is a failure.
    void getModulesWith(const std::vector<std::string>& moduleNames);

    const std::shared_ptr<ModulesPersistanceDelegate> dataManager;

private:
    template <class Ask>
    void answerModules(std::vector<std::string> moduleNames, Ask ask);
};

}  // namespace tarvo
