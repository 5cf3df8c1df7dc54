#include "tarvobase/value_objects/transaction/TransactionMap.h"

#include "tarvobase/storage/StoredForm.h"

namespace tarvo {

template struct StoredNames<TransactionMapKeys, TransactionMap, Result<TransactionMap, std::string>>;

}  // namespace tarvo
