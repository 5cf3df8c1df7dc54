#pragma once

#include <string>

#include "tarvobase/usecase/Describe.h"
#include "tarvobase/value_objects/StoredForm.h"

namespace tarvo {

/// A stage that deals of a pipeline pass through. A stage may belong to several pipelines.
struct PipelineStage {
    std::string pipelineId;
    std::string stageId;
    std::string actualName;
    std::string displayName;
    std::string stageDisplayIndex;  ///< its place in the pipeline, as a decimal number

    static constexpr auto fields() {
        return describe(field("pipelineId", &PipelineStage::pipelineId), field("stageId", &PipelineStage::stageId),
                        field("actualName", &PipelineStage::actualName),
                        field("displayName", &PipelineStage::displayName),
                        field("stageDisplayIndex", &PipelineStage::stageDisplayIndex));
    }
    friend bool operator==(const PipelineStage&, const PipelineStage&) = default;
};

struct PipelineStageParser {
    std::string_view TableName = "PipelineStage";
    std::string_view PipelineId = "pipelineId";
    std::string_view StageId = "stageId";
    std::string_view ActualName = "actualName";
    std::string_view DisplayName = "displayName";
    std::string_view StageDisplayIndex = "stageDisplayIndex";
};

struct PipelineStageDBParser : PipelineStageParser {
    constexpr PipelineStageDBParser() {
        TableName = "DEALS_STAGES";
        PipelineId = "pipeline_id";
        StageId = "stage_id";
        ActualName = "actual_value";
        DisplayName = "display_value";
        StageDisplayIndex = "sequence_number";
    }
    ValueMap getDictionary(const PipelineStage& stage) const;
    PipelineStage getValue(const Row& row) const;
};

}  // namespace tarvo
