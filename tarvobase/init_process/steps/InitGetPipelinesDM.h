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

/// The step `pipelines`: downloads the pipelines and stages of the first layout of the deals. The step fails if the
/// module or a layout is not stored. It waits for the metadata, which contain the layouts.
class InitGetPipelinesDM final : public FlaggedStep {
public:
    struct Persistance {
        std::shared_ptr<ModulesPersistanceDelegate> moduleDAO;
        std::shared_ptr<ModuleLayoutInfoPersistanceDelegate> layoutDAO;
        std::shared_ptr<PipelinePersistanceDelegate> pipelineDAO;
        std::shared_ptr<PipelineStagePersistanceDelegate> pipelineStageDAO;
    };
    InitGetPipelinesDM(std::shared_ptr<GetPipelinesNSP> networkService, Persistance persistance,
                       UserDefaultsUtil userDefaultsUtil, Scope scope);

    /// Makes a step over an adapter and the settings store.
    static std::shared_ptr<InitGetPipelinesDM> make(
        const std::shared_ptr<DatabaseAdapter>& adapter, std::shared_ptr<UserDefaultsProtocol> userDefaults,
        std::shared_ptr<GetPipelinesNSP> networkService = std::make_shared<GetPipelinesNS>());

    Process processName() const override { return Process::pipelines; }

protected:
    void request(NetworkCompletion answered) override;
    Result<bool, ParserError> store(const Data& body) override;

private:
    const std::shared_ptr<GetPipelinesNSP> networkService_;
    const Persistance persistance_;
};

}  // namespace tarvo
