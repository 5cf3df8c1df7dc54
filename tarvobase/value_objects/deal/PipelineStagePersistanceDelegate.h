#pragma once

#include <string>
#include <vector>

#include "platform/Object.h"
#include "platform/Result.h"
#include "tarvobase/network_layer/ParserError.h"
#include "tarvobase/value_objects/deal/PipelineStage.h"

namespace tarvo {

/// The store of the pipelines' stages. Lists are in the order of the store and may be empty. Reads fail with
/// `ParserError::noData` when the store cannot be read. Writes return whether they were stored. Any thread may use it.
class PipelineStagePersistanceDelegate : public virtual platform::Object {
public:
    using Stages = Result<std::vector<PipelineStage>, ParserError>;

    virtual bool storePipelineStages(const std::vector<PipelineStage>& stages) = 0;
    virtual Stages getPipelineStages() = 0;
    virtual Stages getPipelineStagesWith(const std::string& pipelineId) = 0;
};

}  // namespace tarvo
