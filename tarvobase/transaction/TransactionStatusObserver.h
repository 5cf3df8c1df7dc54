#pragma once

#include "platform/Object.h"
#include "tarvobase/value_objects/transaction/NTransaction.h"

namespace tarvo {

/// The topic for transactions that are not sent any more, because they were started as often as is allowed. Callbacks
/// run on the main queue.
class TransactionStatusObserver : public virtual platform::Object {
public:
    virtual void transactionGaveUp(const NTransaction& transaction) { static_cast<void>(transaction); }
};

}  // namespace tarvo
