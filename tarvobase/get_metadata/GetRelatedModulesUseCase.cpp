#include "tarvobase/get_metadata/GetRelatedModulesUseCase.h"

#include "tarvobase/metadata/Stores.h"

namespace tarvo {

GetRelatedModulesUseCase::GetRelatedModulesUseCase() : GetRelatedModulesUseCase(Stores::current().relatedLists()) {}

void GetRelatedModulesUseCase::getRelatedModules(const std::string& moduleName) {
    answer(
        [store = dataManager, moduleName] { return store->getModulesRelatedToModule(moduleName); },
        [moduleName](GetRelatedModulesUseCaseDelegate& delegate, const std::optional<std::vector<RelatedList>>& lists) {
            lists ? delegate.relatedModulesFetched(moduleName, *lists)
                  : delegate.unableToFetchRelatedModules(moduleName);
        });
}

}  // namespace tarvo
