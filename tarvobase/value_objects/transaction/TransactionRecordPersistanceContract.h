#pragma once

#include <optional>
#include <string>

#include "platform/Object.h"
#include "tarvobase/network_layer/ParserError.h"
#include "tarvobase/value_objects/transaction/NTransactionRecord.h"

namespace tarvo {

/// The store of the two sides of records with changes in the current queue. Writes return whether they were stored, and
/// join the transaction of the database around them; the table is made with the first write if there is none. Any
/// thread may use it; each call blocks its caller.
class TransactionRecordPersistanceContract : public virtual platform::Object {
public:
    /// Fails with `noData` if the table cannot be read, and with `typeConversionFailedForKey` and the column if the
    /// row cannot.
    using Found = Result<std::optional<NTransactionRecord>, ParserError>;

    /// Stores both sides of a record, in place of those stored before.
    virtual bool storeTransactionRecord(const NTransactionRecord& record) = 0;
    virtual Found getTransactionRecord(const std::string& recordId) = 0;
    virtual bool removeTransactionRecord(const std::string& recordId) = 0;
    /// Moves a record to another id, also where its device side names the former one.
    virtual bool replaceRecordId(const std::string& newId, const std::string& formerId) = 0;
};

}  // namespace tarvo
