#pragma once

#include <memory>
#include <string>
#include <utility>

#include "tarvobase/configuration/Assemblers.h"
#include "tarvobase/sync/RecordsSyncUseCases.h"

namespace tarvo {

/// Builds a sync of all modules and starts it. An assembler holds its use case, so releasing it ends the callbacks; the
/// rounds go on.
class AllModulesSyncAssembler final : public BaseAssemblerWithDatabaseUserDefaults {
public:
    using BaseAssemblerWithDatabaseUserDefaults::BaseAssemblerWithDatabaseUserDefaults;

    const std::shared_ptr<AllModulesSyncUseCase> allModulesSyncUseCase =
        AllModulesSyncUseCase::make(Stores::over(databaseAdapter, userDefaults));

    /// Sets the delegate, which is held weakly. Call it before `syncAllModules`.
    void setDelegate(std::weak_ptr<RecordsSyncUseCaseDelegate> delegate) {
        allModulesSyncUseCase->delegate = std::move(delegate);
    }
    void syncAllModules() { allModulesSyncUseCase->syncAllModules(); }
};

/// Builds syncs of single modules and starts them.
class ModuleSyncAssembler final : public BaseAssemblerWithDatabaseUserDefaults {
public:
    using BaseAssemblerWithDatabaseUserDefaults::BaseAssemblerWithDatabaseUserDefaults;

    const std::shared_ptr<ModuleyncUseCase> moduleSyncUseCase =
        ModuleyncUseCase::make(Stores::over(databaseAdapter, userDefaults));

    /// Sets the delegate, which is held weakly. Call it before `syncForModule`.
    void setDelegate(std::weak_ptr<RecordsSyncUseCaseDelegate> delegate) {
        moduleSyncUseCase->delegate = std::move(delegate);
    }
    void syncForModule(const std::string& moduleName) { moduleSyncUseCase->syncRecords(moduleName); }
};

}  // namespace tarvo
