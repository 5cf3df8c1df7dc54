#pragma once

#include <string>
#include <vector>

#include "platform/Object.h"
#include "platform/Result.h"
#include "tarvobase/network_layer/ParserError.h"
#include "tarvobase/value_objects/deal/Pipeline.h"

namespace tarvo {

/// The store of pipelines. Lists are in the order of the store and may be empty. Reads fail with `ParserError::noData`
/// when the store cannot be read. Writes return whether they were stored. Any thread may use it.
class PipelinePersistanceDelegate : public virtual platform::Object {
public:
    using Pipelines = Result<std::vector<Pipeline>, ParserError>;

    virtual bool storePipelines(const std::vector<Pipeline>& pipelines) = 0;
    virtual Pipelines getPipelines() = 0;
};

}  // namespace tarvo
