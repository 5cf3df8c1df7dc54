#include "tarvobase/value_objects/deal/PipelineInDatabase.h"

namespace tarvo {

namespace {

constexpr PipelineDBParser pipelineParser;
constexpr PipelineStageDBParser stageParser;

}  // namespace

bool PipelineInDatabase::storePipelines(const std::vector<Pipeline>& pipelines) {
    return table().store(rowsOf(pipelines, pipelineParser));
}
PipelinePersistanceDelegate::Pipelines PipelineInDatabase::getPipelines() {
    return presentOrNoData(
        table().valuesOf(table().fetchAll(), [](const Row& row) { return pipelineParser.getValue(row); }));
}

bool PipelineStageInDatabase::storePipelineStages(const std::vector<PipelineStage>& stages) {
    return table().store(rowsOf(stages, stageParser));
}
PipelineStagePersistanceDelegate::Stages PipelineStageInDatabase::getPipelineStages() {
    return stagesWhere(Criteria::isNotNull(std::string(stageParser.PipelineId)));
}
PipelineStagePersistanceDelegate::Stages PipelineStageInDatabase::getPipelineStagesWith(const std::string& pipelineId) {
    return stagesWhere(columnIs(stageParser.PipelineId, pipelineId));
}
PipelineStagePersistanceDelegate::Stages PipelineStageInDatabase::stagesWhere(Criteria criteria) const {
    auto rows = table().fetch(inStoredOrder(FetchQuery(table().tableName(), std::move(criteria))));
    return presentOrNoData(table().valuesOf(rows, [](const Row& row) { return stageParser.getValue(row); }));
}

}  // namespace tarvo
