#include "tarvobase/value_objects/transaction/NTransactionRecord.h"

#include "tarvobase/value_objects/transaction/TransactionCodecs.h"

namespace tarvo {

template struct StoredMapper<TransactionRecordMapper, NTransactionRecord>;

}  // namespace tarvo
