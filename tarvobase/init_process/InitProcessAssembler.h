#pragma once

#include <memory>
#include <utility>

#include "tarvobase/configuration/Assemblers.h"
#include "tarvobase/init_process/InitProcessUseCase.h"

namespace tarvo {

/// Says which steps a first download has after the init call.
enum class InitSteps { withoutPipelines, all };

/// Makes a first download over the adapters. Each step has a network service of its own and reports failures to the use
/// case. `databaseAdapter` must be the account's open database, and also that of the configuration.
std::shared_ptr<InitProcessUseCase> makeInitProcessUseCase(const BaseAssemblerWithDatabaseUserDefaults& assembler,
                                                           InitSteps steps);

/// Builds a first download and starts it. An assembler serves one run. It holds the use case, so releasing it ends the
/// run.
template <InitSteps steps>
class BasicInitProcessAssembler final : public BaseAssemblerWithDatabaseUserDefaults {
public:
    using BaseAssemblerWithDatabaseUserDefaults::BaseAssemblerWithDatabaseUserDefaults;

    const std::shared_ptr<InitProcessUseCase> initProcessUseCase = makeInitProcessUseCase(*this, steps);

    std::shared_ptr<InitProcessUseCaseDelegate> initProcessUseCaseDelegate() const {
        return initProcessUseCase->delegate.lock();
    }
    /// Sets the delegate, which is held weakly. Call it before `startInitProcess`.
    void setInitProcessUseCaseDelegate(std::weak_ptr<InitProcessUseCaseDelegate> delegate) {
        initProcessUseCase->delegate = std::move(delegate);
    }
    void startInitProcess() { initProcessUseCase->startInitProcess(); }
};

/// For applications without deals in pipelines.
using InitProcessAssembler = BasicInitProcessAssembler<InitSteps::withoutPipelines>;
using MacInitProcessAssembler = BasicInitProcessAssembler<InitSteps::all>;

}  // namespace tarvo
