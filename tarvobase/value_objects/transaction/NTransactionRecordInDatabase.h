#pragma once

#include "tarvobase/storage/EnsuredTable.h"
#include "tarvobase/value_objects/transaction/TransactionRecordPersistanceContract.h"

namespace tarvo {

/// The table of the two sides of records with changes in the current queue. All organisations share it.
class NTransactionRecordInDatabase final : public TransactionRecordPersistanceContract {
public:
    /// The adapter may be null.
    explicit NTransactionRecordInDatabase(std::shared_ptr<DatabaseAdapter> databaseAdapter);

    bool storeTransactionRecord(const NTransactionRecord& record) override;
    Found getTransactionRecord(const std::string& recordId) override;
    bool removeTransactionRecord(const std::string& recordId) override;
    bool replaceRecordId(const std::string& newId, const std::string& formerId) override;

private:
    const EnsuredTable table_;
};

}  // namespace tarvo
