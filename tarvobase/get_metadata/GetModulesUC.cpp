#include "tarvobase/get_metadata/GetModulesUC.h"

#include "tarvobase/configuration/Scope.h"
#include "tarvobase/value_objects/module/ModuleInDatabase.h"

namespace tarvo {

std::shared_ptr<ModulesPersistanceDelegate> GetModulesDM::modulesPersistance() {
    std::call_once(decided_, [this] {
        ModuleDatabaseConstants constants;
        if (auto adapter = Scope::current().databaseAdapter)
            modulesPersistance_ =
                std::make_shared<ModuleInDatabase>(std::string(constants.TableName), adapter, constants);
    });
    return modulesPersistance_;
}

bool GetModulesDM::getDBResponse(const RequestPtr& request, OnDBSuccess onSuccess, OnDBError onError) {
    auto persistance = modulesPersistance();
    if (!persistance) {
        onError(Failure::domainError({request->moduleNames}));
        return false;
    }
    std::vector<Module> modules;
    for (auto& name : request->moduleNames)
        if (auto module = persistance->getModuleByModuleName(name)) modules.push_back(*std::move(module));
    onSuccess(Response(std::move(modules)));
    return true;
}

}  // namespace tarvo
