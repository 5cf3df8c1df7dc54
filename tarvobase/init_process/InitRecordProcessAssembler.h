#pragma once

#include <memory>
#include <utility>

#include "tarvobase/configuration/Assemblers.h"
#include "tarvobase/init_process/InitRecordProcessUseCase.h"

namespace tarvo {

/// Builds a download of first records and starts it. An assembler serves one run. It holds the use case, so releasing
/// it ends the run.
class InitRecordProcessAssembler final : public BaseAssemblerWithDatabaseUserDefaults {
public:
    using BaseAssemblerWithDatabaseUserDefaults::BaseAssemblerWithDatabaseUserDefaults;

    const std::shared_ptr<InitRecordProcessUseCase> initRecordProcessUseCase =
        InitRecordProcessUseCase::make(databaseAdapter, userDefaults);

    std::shared_ptr<InitRecordProcessUseCaseDelegate> initRecordProcessUseCaseDelegate() const {
        return initRecordProcessUseCase->delegate.lock();
    }
    /// Sets the delegate, which is held weakly. Call it before `startInitRecordProcess`.
    void setInitRecordProcessUseCaseDelegate(std::weak_ptr<InitRecordProcessUseCaseDelegate> delegate) {
        initRecordProcessUseCase->delegate = std::move(delegate);
    }
    void startInitRecordProcess() { initRecordProcessUseCase->startInitRecordProcess(); }
};

}  // namespace tarvo
