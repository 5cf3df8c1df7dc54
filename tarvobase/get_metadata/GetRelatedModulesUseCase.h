#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tarvobase/usecase/DelegateUseCase.h"
#include "tarvobase/value_objects/module/ModuleRelatedListPersistanceDelegate.h"

namespace tarvo {

/// Receives the answers of `GetRelatedModulesUseCase`, on the main queue.
class GetRelatedModulesUseCaseDelegate : public virtual platform::Object {
public:
    /// The lists come in the order in which records of the module show them.
    virtual void relatedModulesFetched(const std::string& moduleName, const std::vector<RelatedList>& modules) {
        static_cast<void>(moduleName), static_cast<void>(modules);
    }
    /// The module has no related lists, or there is no database.
    virtual void unableToFetchRelatedModules(const std::string& moduleName) { static_cast<void>(moduleName); }
};

/// Reports the related lists of a module to a delegate.
class GetRelatedModulesUseCase final : public DelegateUseCase<GetRelatedModulesUseCaseDelegate> {
public:
    GetRelatedModulesUseCase();
    explicit GetRelatedModulesUseCase(std::shared_ptr<ModuleRelatedListPersistanceDelegate> dataManager)
        : dataManager(std::move(dataManager)) {}

    void getRelatedModules(const std::string& moduleName);

    const std::shared_ptr<ModuleRelatedListPersistanceDelegate> dataManager;
};

}  // namespace tarvo
