#include "tarvobase/value_objects/PipelineStage.h"

namespace tarvo {

namespace {

using S = PipelineStage;
using StageNames = PipelineStageParser;

const auto stageForm = form<S, StageNames>(
    member(&S::pipelineId, &StageNames::PipelineId), member(&S::stageId, &StageNames::StageId),
    member(&S::actualName, &StageNames::ActualName), member(&S::displayName, &StageNames::DisplayName),
    member(&S::stageDisplayIndex, &StageNames::StageDisplayIndex));

}  // namespace

ValueMap PipelineStageDBParser::getDictionary(const PipelineStage& stage) const {
    return stageForm.toMap(stage, *this, Form::table);
}
PipelineStage PipelineStageDBParser::getValue(const Row& row) const { return stageForm.read(row, *this, Form::table); }

}  // namespace tarvo
