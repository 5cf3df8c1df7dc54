#include "tarvobase/init_process/steps/InitGetPipelinesDM.h"

#include "tarvobase/init_process/parsers/PipelinesNWParser.h"
#include "tarvobase/metadata/Stores.h"

namespace tarvo {

InitGetPipelinesDM::InitGetPipelinesDM(std::shared_ptr<GetPipelinesNSP> networkService, Persistance persistance,
                                       UserDefaultsUtil userDefaultsUtil, Scope scope)
    : FlaggedStep(std::move(userDefaultsUtil), std::move(scope)),
      networkService_(std::move(networkService)),
      persistance_(std::move(persistance)) {
    dependencyList = {{.processName = Process::metadata}};
}

std::shared_ptr<InitGetPipelinesDM> InitGetPipelinesDM::make(const std::shared_ptr<DatabaseAdapter>& adapter,
                                                             std::shared_ptr<UserDefaultsProtocol> userDefaults,
                                                             std::shared_ptr<GetPipelinesNSP> networkService) {
    auto stores = Stores::over(adapter, userDefaults);
    return std::make_shared<InitGetPipelinesDM>(std::move(networkService),
                                                Persistance{.moduleDAO = stores.modules(),
                                                            .layoutDAO = stores.layouts(),
                                                            .pipelineDAO = stores.pipelines(),
                                                            .pipelineStageDAO = stores.pipelineStages()},
                                                stores.userDefaultsUtil(), stores.scope);
}

void InitGetPipelinesDM::request(NetworkCompletion answered) {
    auto deals = persistance_.moduleDAO->getModule(ModuleIdentifier::Case::deals);
    if (!deals) return fail("the deals are not stored");
    auto layouts = persistance_.layoutDAO->getModuleLayoutInfoByModuleName(deals->moduleName);
    if (!layouts || layouts->empty()) return fail("the deals have no layout");
    networkService_->getPipelinesAndStages(*deals, layouts->front().layoutID, std::move(answered));
}

Result<bool, ParserError> InitGetPipelinesDM::store(const Data& body) {
    auto parsed = PipelinesNWParser::getParsedPipelines(body);
    if (!parsed) return parsed.error();
    return commit([&] {
        persistance_.pipelineDAO->storePipelines(parsed->pipelines);
        persistance_.pipelineStageDAO->storePipelineStages(parsed->stages);
    });
}

}  // namespace tarvo
