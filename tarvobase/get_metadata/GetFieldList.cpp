#include "tarvobase/get_metadata/GetFieldList.h"

#include "tarvobase/configuration/Scope.h"

namespace tarvo {

GetFieldList::GetFieldList() : GetFieldList(FieldListAssembler::getFieldListDM(Scope::current().databaseAdapter)) {}

void GetFieldList::run(std::shared_ptr<const Request> request, UICallback handler) {
    auto fieldList = dataManager->getFields(request->moduleName, request->columnList, request->sortList);
    if (!fieldList) return handler.onError(Failure::domainError(fieldList.error()));
    handler.onSuccess(Response(*std::move(fieldList)));
}

}  // namespace tarvo
