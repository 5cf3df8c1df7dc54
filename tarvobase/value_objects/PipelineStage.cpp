#include "tarvobase/value_objects/PipelineStage.h"

#include "tarvobase/value_objects/StoredForm.h"

namespace tarvo {

template struct StoredNames<PipelineStageParser, PipelineStage>;

}  // namespace tarvo
