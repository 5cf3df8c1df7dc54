#include "tarvobase/get_metadata/GetModuleUseCase.h"

#include "tarvobase/metadata/Stores.h"

namespace tarvo {

GetModuleUseCase::GetModuleUseCase() : GetModuleUseCase(Stores::current().modules()) {}

void GetModuleUseCase::getModule(const std::string& moduleName) {
    answer([store = dataManager, moduleName] { return store->getModuleByModuleName(moduleName); },
           [moduleName](GetModuleUseCaseDelegate& delegate, const Result<Module, ParserError>& module) {
               module ? delegate.moduleFetched(*module) : delegate.unableToFetchModules({moduleName});
           });
}

void GetModuleUseCase::getAllModules() {
    answerModules({}, [](ModulesPersistanceDelegate& store, auto&) { return store.getAllModules(); });
}

void GetModuleUseCase::getModulesWith(const std::vector<std::string>& moduleNames) {
    answerModules(moduleNames, [](ModulesPersistanceDelegate& store, const std::vector<std::string>& names) {
        return store.getModulesByModuleNames(names);
    });
}

template <class Read>
void GetModuleUseCase::answerModules(std::vector<std::string> moduleNames, Read read) {
    answer([store = dataManager, moduleNames, read] { return read(*store, moduleNames); },
           [moduleNames](GetModuleUseCaseDelegate& delegate, const Result<std::vector<Module>, ParserError>& modules) {
               modules ? delegate.modulesFetched(*modules) : delegate.unableToFetchModules(moduleNames);
           });
}

}  // namespace tarvo
