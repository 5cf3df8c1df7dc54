#include "tarvobase/init_process/InitProcessAssembler.h"

#include "tarvobase/init_process/steps/GetCurrentUserDM.h"
#include "tarvobase/init_process/steps/InitCVRecordsDM.h"
#include "tarvobase/init_process/steps/InitCurrencyDM.h"
#include "tarvobase/init_process/steps/InitCustomViewDM.h"
#include "tarvobase/init_process/steps/InitGetPermissionsDM.h"
#include "tarvobase/init_process/steps/InitGetPipelinesDM.h"
#include "tarvobase/init_process/steps/InitMetadataDM.h"
#include "tarvobase/metadata/Stores.h"

namespace tarvo {

std::shared_ptr<InitProcessUseCase> makeInitProcessUseCase(const BaseAssemblerWithDatabaseUserDefaults& assembler,
                                                           InitSteps steps) {
    auto& database = assembler.databaseAdapter;
    auto& defaults = assembler.userDefaults;
    auto stores = Stores::over(database, defaults);
    InitProcessUseCase::Parts parts{
        .initProcessDataManager = std::make_shared<InitProcessDataManager>(defaults),
        .currentUserDM = GetCurrentUserDM::make(database, defaults),
        .appInitDM = AppInitDataManager::make(database, defaults),
        .userDefaultsUtil = stores.userDefaultsUtil(),
        .downloadableList = {InitCustomViewDM::make(database, defaults),
                             InitMetadataDM::make(database, database, defaults),
                             InitCurrencyDM::make(database, defaults), InitCVRecordsDM::make(database, defaults),
                             InitGetPermissionsDM::make(database, defaults)},
        .populateRelatedModulesDM = PopulateRelatedModulesDM::make(stores),
        .scope = stores.scope};
    if (steps == InitSteps::all) parts.downloadableList.push_back(InitGetPipelinesDM::make(database, defaults));
    return InitProcessUseCase::make(std::move(parts));
}

}  // namespace tarvo
