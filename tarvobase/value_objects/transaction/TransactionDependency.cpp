#include "tarvobase/value_objects/transaction/TransactionDependency.h"

#include "tarvobase/storage/StoredForm.h"

namespace tarvo {

template struct StoredMapper<TransactionDependencyMapper, TransactionDependency>;

}  // namespace tarvo
