#pragma once

#include <vector>

#include "platform/Data.h"
#include "platform/Result.h"
#include "tarvobase/network_layer/ParserError.h"
#include "tarvobase/value_objects/deal/DealStage.h"
#include "tarvobase/value_objects/deal/Pipeline.h"
#include "tarvobase/value_objects/deal/PipelineStage.h"

namespace tarvo {

/// Parses the answer of the pipelines' call, which has two kinds of rows. A row whose fourth column is a list is a
/// pipeline with its stages; a row with the text of a type there is a stage of the organisation. Leaves out rows of the
/// other kind, rows that are too short and rows with a value of another type; a pipeline goes together with its stages.
/// Fails with `noData` if the server says that there are none.
struct PipelinesNWParser {
    struct ParsedPipelines {
        std::vector<Pipeline> pipelines;
        std::vector<PipelineStage> stages;  ///< of all pipelines, in the server's order
    };
    static Result<ParsedPipelines, ParserError> getParsedPipelines(const platform::Data& data);
    static Result<std::vector<DealStage>, ParserError> getParsedStages(const platform::Data& data);
};

}  // namespace tarvo
