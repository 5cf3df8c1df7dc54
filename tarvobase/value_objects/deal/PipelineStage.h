#pragma once

#include <string>

#include "tarvobase/storage/StoredNames.h"

namespace tarvo {

struct PipelineStage;

struct PipelineStageParser : StoredNames<PipelineStageParser, PipelineStage> {
    std::string_view TableName = of("PipelineStage", "DEALS_STAGES");
    std::string_view PipelineId = of("pipelineId", "pipeline_id");
    std::string_view StageId = of("stageId", "stage_id");
    std::string_view ActualName = of("actualName", "actual_value");
    std::string_view DisplayName = of("displayName", "display_value");
    std::string_view StageDisplayIndex = of("stageDisplayIndex", "sequence_number");
};
struct PipelineStageDBParser : TableTwin<PipelineStageParser> {};

/// A stage that the deals of a pipeline pass through. A stage may belong to several pipelines.
struct PipelineStage {
    std::string pipelineId;
    std::string stageId;
    std::string actualName;
    std::string displayName;
    std::string stageDisplayIndex;  ///< its place in the pipeline, as a decimal number

    static constexpr auto fields() {
        using V = PipelineStage;
        using Names = PipelineStageParser;
        return describe(field("pipelineId", &V::pipelineId, &Names::PipelineId),
                        field("stageId", &V::stageId, &Names::StageId),
                        field("actualName", &V::actualName, &Names::ActualName),
                        field("displayName", &V::displayName, &Names::DisplayName),
                        field("stageDisplayIndex", &V::stageDisplayIndex, &Names::StageDisplayIndex));
    }
    friend bool operator==(const PipelineStage&, const PipelineStage&) = default;
};

}  // namespace tarvo
