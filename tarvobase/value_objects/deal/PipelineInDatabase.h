#pragma once

#include "tarvobase/storage/DatabasePersistanceClass.h"
#include "tarvobase/value_objects/deal/PipelinePersistanceDelegate.h"
#include "tarvobase/value_objects/deal/PipelineStagePersistanceDelegate.h"

namespace tarvo {

/// The table of pipelines.
class PipelineInDatabase final : public StaticDatabasePersistanceClass<PipelineDBParser>,
                                 public PipelinePersistanceDelegate {
public:
    using StaticDatabasePersistanceClass::StaticDatabasePersistanceClass;

    bool storePipelines(const std::vector<Pipeline>& pipelines) override;
    Pipelines getPipelines() override;
};

/// The table of the pipelines' stages. It also holds the organisation's stages, which belong to no pipeline and are not
/// read here.
class PipelineStageInDatabase final : public StaticDatabasePersistanceClass<PipelineStageDBParser>,
                                      public PipelineStagePersistanceDelegate {
public:
    using StaticDatabasePersistanceClass::StaticDatabasePersistanceClass;

    bool storePipelineStages(const std::vector<PipelineStage>& stages) override;
    Stages getPipelineStages() override;
    Stages getPipelineStagesWith(const std::string& pipelineId) override;

private:
    Stages stagesWhere(Criteria criteria) const;
};

}  // namespace tarvo
