#include "tarvobase/init_process/InitProcessAssembler.h"

#include "tarvobase/get_metadata/InitMetadataDM.h"
#include "tarvobase/init_process/GetCurrentUserDM.h"
#include "tarvobase/init_process/InitCVRecordsDM.h"
#include "tarvobase/init_process/InitCurrencyDM.h"
#include "tarvobase/init_process/InitGetPermissionsDM.h"
#include "tarvobase/init_process/InitGetPipelinesDM.h"
#include "tarvobase/list_view/InitCustomViewDM.h"

namespace tarvo {

std::shared_ptr<InitProcessUseCase> makeInitProcessUseCase(const BaseAssemblerWithDatabaseUserDefaults& assembler,
                                                           InitSteps steps) {
    auto& database = assembler.databaseAdapter;
    auto& defaults = assembler.userDefaults;
    InitProcessUseCase::Parts parts{
        .initProcessDataManager = std::make_shared<InitProcessDataManager>(defaults),
        .currentUserDM = GetCurrentUserDM::make(database, defaults),
        .appInitDM = AppInitDataManager::make(database, defaults),
        .userDefaultsUtil = UserDefaultsUtil(defaults),
        .downloadableList = {InitCustomViewDM::make(database, defaults),
                             InitMetadataDM::make(database, database, defaults),
                             InitCurrencyDM::make(database, defaults), InitCVRecordsDM::make(database, defaults),
                             InitGetPermissionsDM::make(database, defaults)},
        .populateRelatedModulesDM = std::make_shared<PopulateRelatedModulesDM>()};
    if (steps == InitSteps::all) parts.downloadableList.push_back(InitGetPipelinesDM::make(database, defaults));
    return InitProcessUseCase::make(std::move(parts));
}

}  // namespace tarvo
