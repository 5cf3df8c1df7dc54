#include "bridge/calls/Calls.h"

#include "tarvobase/get_metadata/GetModule.h"
#include "tarvobase/get_metadata/GetModuleTagsUC.h"
#include "tarvobase/get_metadata/GetModulesUC.h"
#include "tarvobase/get_metadata/GetRelatedModulesUC.h"
#include "tarvobase/get_metadata/GetUsers.h"

namespace tarvo::bridge {

void addCalls(Registry& registry) {
    addAccountCalls(registry);
    addMetadataCalls(registry);
    addViewCalls(registry);
    addRecordCalls(registry);
    addChangeCalls(registry);
    addNoteCalls(registry);
    addDownloadCalls(registry);
    addSyncCalls(registry);
    registry.addUsecase<GetModule>("GetModule");
    registry.addUsecase<GetModuleTagsUC>("GetModuleTagsUC");
    registry.addUsecase<GetModulesUC>("GetModulesUC");
    registry.addUsecase<GetRelatedModulesUC>("GetRelatedModulesUC");
    registry.addUsecase<GetUser>("GetUser");
    registry.addUsecase<GetUsers>("GetUsers");
}

}  // namespace tarvo::bridge
