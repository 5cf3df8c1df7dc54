#include "tarvobase/value_objects/deal/PipelineStage.h"

#include "tarvobase/storage/StoredForm.h"

namespace tarvo {

template struct StoredNames<PipelineStageParser, PipelineStage>;

}  // namespace tarvo
