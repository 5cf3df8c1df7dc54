#pragma once

#include "tarvobase/storage/EnsuredTable.h"
#include "tarvobase/value_objects/transaction/TransactionRecordPersistanceDelegate.h"

namespace tarvo {

/// The table of the two sides of records with changes that wait. All organisations share it.
class TransactionRecordInDatabase final : public TransactionRecordPersistanceDelegate {
public:
    /// The adapter may be null.
    explicit TransactionRecordInDatabase(std::shared_ptr<DatabaseAdapter> databaseAdapter);

    bool storeTransactionRecordPersistance(const TransactionRecord& record) override;
    bool removeTransactionRecord(const std::string& recordID) override;
    bool removeTransactionRecords(const std::vector<std::string>& recordIDs) override;
    Found getTransactionRecord(const std::string& recordID) override;
    std::optional<bool> hasTransactionRecord(const std::string& recordID) override;
    bool updateDeviceData(const std::string& recordID, const ValueMap& deviceData) override;

private:
    EnsuredTable table_;
};

}  // namespace tarvo
