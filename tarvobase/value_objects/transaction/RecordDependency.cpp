#include "tarvobase/value_objects/transaction/RecordDependency.h"

#include "tarvobase/storage/StoredForm.h"

namespace tarvo {

template struct StoredMapper<RecordDependencyMapper, RecordDependency>;

}  // namespace tarvo
