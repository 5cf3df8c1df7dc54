#pragma once

#include <memory>
#include <utility>

#include "tarvobase/configuration/Assemblers.h"
#include "tarvobase/init_process/InitProcessUseCase.h"

namespace tarvo {

/// Which steps a first download has behind the init call.
enum class InitSteps { withoutPipelines, all };

/// A first download over the adapters: its steps, each with a network service of its own, failures chained to the use
/// case. `databaseAdapter` must be the account's open database and the configuration's too.
std::shared_ptr<InitProcessUseCase> makeInitProcessUseCase(const BaseAssemblerWithDatabaseUserDefaults& assembler,
                                                           InitSteps steps);

/// Builds a first download and starts it. An assembler serves one run and holds its use case, so letting it go ends the
/// run.
template <InitSteps steps>
class BasicInitProcessAssembler final : public BaseAssemblerWithDatabaseUserDefaults {
public:
    using BaseAssemblerWithDatabaseUserDefaults::BaseAssemblerWithDatabaseUserDefaults;

    const std::shared_ptr<InitProcessUseCase> initProcessUseCase = makeInitProcessUseCase(*this, steps);

    std::shared_ptr<InitProcessUseCaseDelegate> initProcessUseCaseDelegate() const {
        return initProcessUseCase->delegate.lock();
    }
    /// Held weakly. Set before `startInitProcess`.
    void setInitProcessUseCaseDelegate(std::weak_ptr<InitProcessUseCaseDelegate> delegate) {
        initProcessUseCase->delegate = std::move(delegate);
    }
    void startInitProcess() { initProcessUseCase->startInitProcess(); }
};

/// For applications without deals in pipelines.
using InitProcessAssembler = BasicInitProcessAssembler<InitSteps::withoutPipelines>;
using MacInitProcessAssembler = BasicInitProcessAssembler<InitSteps::all>;

}  // namespace tarvo
