#pragma once

#include <memory>
#include <string>

#include "tarvobase/configuration/UserDefaults.h"
#include "tarvobase/download/FlaggedStep.h"
#include "tarvobase/init_process/steps/GetPipelinesNS.h"
#include "tarvobase/value_objects/deal/PipelinePersistanceDelegate.h"
#include "tarvobase/value_objects/deal/PipelineStagePersistanceDelegate.h"
#include "tarvobase/value_objects/layout/ModuleLayoutInfoPersistanceDelegate.h"
#include "tarvobase/value_objects/module/ModulesPersistanceDelegate.h"

namespace tarvo {

class DatabaseAdapter;

/// The step `pipelines`: the pipelines of deals and their stages, for the first layout of the deals; without the module
/// or a layout the step fails. It waits for the metadata, which bring the layouts.
class InitGetPipelinesDM final : public FlaggedStep {
public:
    struct Persistance {
        std::shared_ptr<ModulesPersistanceDelegate> moduleDAO;
        std::shared_ptr<ModuleLayoutInfoPersistanceDelegate> layoutDAO;
        std::shared_ptr<PipelinePersistanceDelegate> pipelineDAO;
        std::shared_ptr<PipelineStagePersistanceDelegate> pipelineStageDAO;
    };
    InitGetPipelinesDM(std::shared_ptr<GetPipelinesNSP> networkService, Persistance persistance,
                       UserDefaultsUtil userDefaultsUtil);

    /// A step over an adapter and the settings store, wired together.
    static std::shared_ptr<InitGetPipelinesDM> make(
        const std::shared_ptr<DatabaseAdapter>& adapter, std::shared_ptr<UserDefaultsProtocol> userDefaults,
        std::shared_ptr<GetPipelinesNSP> networkService = std::make_shared<GetPipelinesNS>());

    Process processName() const override { return Process::pipelines; }

protected:
    void request(NetworkCompletion answered) override;
    Result<platform::Nothing, ParserError> store(const Data& body) override;

private:
    const std::shared_ptr<GetPipelinesNSP> networkService_;
    const Persistance persistance_;
};

}  // namespace tarvo
