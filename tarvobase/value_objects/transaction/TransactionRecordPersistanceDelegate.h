#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/Object.h"
#include "tarvobase/network_layer/ParserError.h"
#include "tarvobase/value_objects/transaction/TransactionRecord.h"

namespace tarvo {

/// The store of the two sides of records with changes that wait. Writes return whether they were stored, and join the
/// transaction of the database around them; the table is made with the first write if there is none. Any thread may use
/// it; each call blocks its caller.
class TransactionRecordPersistanceDelegate : public virtual platform::Object {
public:
    /// Fails with `noData` if the table cannot be read, and with `typeConversionFailedForKey` and the column if the
    /// row cannot.
    using Found = Result<std::optional<TransactionRecord>, ParserError>;

    /// Stores both sides of a record, in place of those stored before.
    virtual bool storeTransactionRecordPersistance(const TransactionRecord& record) = 0;
    virtual bool removeTransactionRecord(const std::string& recordID) = 0;
    /// Does the same for many records with one statement.
    virtual bool removeTransactionRecords(const std::vector<std::string>& recordIDs) = 0;
    virtual Found getTransactionRecord(const std::string& recordID) = 0;
    /// Returns whether the sides of a record are stored, or nullopt if the table cannot be read.
    virtual std::optional<bool> hasTransactionRecord(const std::string& recordID) = 0;
    /// Stores the device's side of a record whose sides are stored. The server's side stays as it is.
    virtual bool updateDeviceData(const std::string& recordID, const ValueMap& deviceData) = 0;
};

}  // namespace tarvo
