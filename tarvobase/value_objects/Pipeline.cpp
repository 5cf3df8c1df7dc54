#include "tarvobase/value_objects/Pipeline.h"

#include "tarvobase/value_objects/StoredForm.h"

namespace tarvo {

template struct StoredNames<PipelineParser, Pipeline>;

}  // namespace tarvo
