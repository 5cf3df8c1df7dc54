#include "tarvobase/value_objects/deal/Pipeline.h"

#include "tarvobase/storage/StoredForm.h"

namespace tarvo {

template struct StoredNames<PipelineParser, Pipeline>;

}  // namespace tarvo
