#include "tarvobase/value_objects/transaction/TransactionRecord.h"

#include "tarvobase/value_objects/transaction/TransactionCodecs.h"

namespace tarvo {

template struct StoredNames<TransactionRecordConstants, TransactionRecord, Result<TransactionRecord, std::string>>;

}  // namespace tarvo
