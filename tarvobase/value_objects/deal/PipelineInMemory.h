#pragma once

#include "tarvobase/storage/InMemoryPersistanceClass.h"
#include "tarvobase/value_objects/deal/PipelinePersistanceDelegate.h"
#include "tarvobase/value_objects/deal/PipelineStagePersistanceDelegate.h"

namespace tarvo {

/// Keeps pipelines in memory, in front of the table of pipelines. Without a primary store a miss is `noData`.
class PipelineInMemory final : public InMemoryPersistanceClass, public PipelinePersistanceDelegate {
public:
    explicit PipelineInMemory(std::shared_ptr<InMemoryDatabaseAdapter> inMemoryPersistanceClass,
                              std::shared_ptr<PipelinePersistanceDelegate> primaryPersistance = nullptr,
                              PipelineParser pipelineParser = {});

    const PipelineParser pipelineParser;
    const std::shared_ptr<PipelinePersistanceDelegate> primaryPersistance;

    bool storePipelines(const std::vector<Pipeline>& pipelines) override;
    Pipelines getPipelines() override;

private:
    InMemoryTable<Pipeline> memory_;
};

/// Keeps the stages of pipelines in memory, in front of their table. Without a primary store a miss is `noData`.
class PipelineStagesInMemory final : public InMemoryPersistanceClass, public PipelineStagePersistanceDelegate {
public:
    explicit PipelineStagesInMemory(std::shared_ptr<InMemoryDatabaseAdapter> inMemoryPersistanceClass,
                                    std::shared_ptr<PipelineStagePersistanceDelegate> primaryPersistance = nullptr,
                                    PipelineStageParser pipelineStageParser = {});

    const PipelineStageParser pipelineStageParser;
    const std::shared_ptr<PipelineStagePersistanceDelegate> primaryPersistance;

    bool storePipelineStages(const std::vector<PipelineStage>& stages) override;
    Stages getPipelineStages() override;
    Stages getPipelineStagesWith(const std::string& pipelineId) override;

private:
    InMemoryTable<PipelineStage> memory_;
};

}  // namespace tarvo
