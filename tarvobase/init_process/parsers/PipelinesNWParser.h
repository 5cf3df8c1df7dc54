#pragma once

#include <vector>

#include "platform/Data.h"
#include "platform/Result.h"
#include "tarvobase/network_layer/ParserError.h"
#include "tarvobase/value_objects/deal/DealStage.h"
#include "tarvobase/value_objects/deal/Pipeline.h"
#include "tarvobase/value_objects/deal/PipelineStage.h"

namespace tarvo {

/// Reads the rows of the pipelines' call, which are of two kinds: one with a list at its fourth column is a pipeline
/// with its stages, one with the text of a type there is a stage of the organisation. Rows of the other kind, rows that
/// are too short and rows with a value of another type are left out, a pipeline together with its stages. `noData` when
/// the server says that there are none.
struct PipelinesNWParser {
    struct ParsedPipelines {
        std::vector<Pipeline> pipelines;
        std::vector<PipelineStage> stages;  ///< of all of them, in the server's order
    };
    static Result<ParsedPipelines, ParserError> getParsedPipelines(const platform::Data& data);
    static Result<std::vector<DealStage>, ParserError> getParsedStages(const platform::Data& data);
};

}  // namespace tarvo
