#include "tarvobase/value_objects/PipelineStage.h"

namespace tarvo {

namespace {

using S = PipelineStage;
using Names = PipelineStageParser;

const auto stageForm =
    form<S, Names>(member(&S::pipelineId, &Names::PipelineId), member(&S::stageId, &Names::StageId),
                   member(&S::actualName, &Names::ActualName), member(&S::displayName, &Names::DisplayName),
                   member(&S::stageDisplayIndex, &Names::StageDisplayIndex));

}  // namespace

ValueMap PipelineStageDBParser::getDictionary(const PipelineStage& stage) const {
    return stageForm.toMap(stage, *this, Form::table);
}
PipelineStage PipelineStageDBParser::getValue(const Row& row) const { return stageForm.read(row, *this, Form::table); }

}  // namespace tarvo
