#include "tarvobase/get_metadata/GetRelatedModulesUC.h"

#include "tarvobase/value_objects/module/ModuleRelatedListInDatabase.h"

namespace tarvo {

GetRelatedModulesDM::GetRelatedModulesDM() : GetRelatedModulesDM(std::make_shared<ModuleRelatedListInDatabase>()) {}

bool GetRelatedModulesDM::getDBResponse(const RequestPtr& request, OnDBSuccess onSuccess, OnDBError onError) {
    auto lists = relatedListPersistance->getModulesRelatedToModule(request->moduleName);
    if (!lists) {
        onError(Failure::domainError({request->moduleName}));
        return false;
    }
    onSuccess(Response(*std::move(lists)));
    return true;
}

}  // namespace tarvo
