#include "tarvobase/get_metadata/GetRelatedModulesUC.h"

#include "tarvobase/metadata/Stores.h"

namespace tarvo {

GetRelatedModulesDM::GetRelatedModulesDM() : GetRelatedModulesDM(Stores::current().relatedLists()) {}

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
