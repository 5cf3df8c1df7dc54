#include "tarvobase/value_objects/deal/PipelineInMemory.h"

namespace tarvo {

namespace {

// A stage may belong to several pipelines.
std::string keyOf(const PipelineStage& stage) { return stage.pipelineId + "\n" + stage.stageId; }

}  // namespace

PipelineInMemory::PipelineInMemory(std::shared_ptr<InMemoryDatabaseAdapter> inMemoryPersistanceClass,
                                   std::shared_ptr<PipelinePersistanceDelegate> primaryPersistance,
                                   PipelineParser pipelineParser)
    : InMemoryPersistanceClass(std::move(inMemoryPersistanceClass)),
      pipelineParser(pipelineParser),
      primaryPersistance(std::move(primaryPersistance)),
      memory_(
          *this, std::string(pipelineParser.TableName), [](const Pipeline& pipeline) { return pipeline.id; },
          this->primaryPersistance != nullptr) {}

bool PipelineInMemory::storePipelines(const std::vector<Pipeline>& pipelines) {
    return memory_.store(pipelines,
                         [&] { return !primaryPersistance || primaryPersistance->storePipelines(pipelines); });
}

PipelinePersistanceDelegate::Pipelines PipelineInMemory::getPipelines() {
    return memory_.allOr(
        [&] { return primaryPersistance ? primaryPersistance->getPipelines() : Pipelines(ParserError::noData()); });
}

PipelineStagesInMemory::PipelineStagesInMemory(std::shared_ptr<InMemoryDatabaseAdapter> inMemoryPersistanceClass,
                                               std::shared_ptr<PipelineStagePersistanceDelegate> primaryPersistance,
                                               PipelineStageParser pipelineStageParser)
    : InMemoryPersistanceClass(std::move(inMemoryPersistanceClass)),
      pipelineStageParser(pipelineStageParser),
      primaryPersistance(std::move(primaryPersistance)),
      memory_(*this, std::string(pipelineStageParser.TableName), keyOf, this->primaryPersistance != nullptr) {}

bool PipelineStagesInMemory::storePipelineStages(const std::vector<PipelineStage>& stages) {
    return memory_.store(stages,
                         [&] { return !primaryPersistance || primaryPersistance->storePipelineStages(stages); });
}

PipelineStagePersistanceDelegate::Stages PipelineStagesInMemory::getPipelineStages() {
    return memory_.allOr(
        [&] { return primaryPersistance ? primaryPersistance->getPipelineStages() : Stages(ParserError::noData()); });
}

// Several stages match, so only the whole table can answer. It is read for the first such request.
PipelineStagePersistanceDelegate::Stages PipelineStagesInMemory::getPipelineStagesWith(const std::string& pipelineId) {
    auto stages = getPipelineStages();
    if (stages) std::erase_if(stages.value(), [&](auto& stage) { return stage.pipelineId != pipelineId; });
    return stages;
}

}  // namespace tarvo
