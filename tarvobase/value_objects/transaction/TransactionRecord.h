#pragma once

#include <string>

#include "platform/Result.h"
#include "tarvobase/storage/StoredNames.h"

namespace tarvo {

struct TransactionRecord;
struct RecordDataCodec;

/// Reading fails with the name of the column that is absent or does not hold what it should.
struct TransactionRecordConstants
    : StoredNames<TransactionRecordConstants, TransactionRecord, Result<TransactionRecord, std::string>> {
    std::string_view TableName = of("TransactionsRecords", "TRANSACTIONS_RECORDS");
    std::string_view RecordID = of("recordId", "record_id");
    std::string_view DeviceData = of("deviceData", "device_data");
    std::string_view ServerData = of("serverData", "server_data");
};
struct TransactionRecordDatabaseConstants : TableTwin<TransactionRecordConstants> {};

/// The two sides of a record with changes that wait. A table holds them as JSON text, which leaves out what JSON cannot
/// express.
struct TransactionRecord {
    std::string recordID;
    ValueMap deviceData;  ///< the record as the user last saved it
    ValueMap serverData;  ///< the record as it was before its first change that waits

    static constexpr auto fields() {
        using V = TransactionRecord;
        using Names = TransactionRecordConstants;
        return describe(field("recordID", &V::recordID, &Names::RecordID).required(),
                        fieldBy<RecordDataCodec>("deviceData", &V::deviceData, &Names::DeviceData).required(),
                        fieldBy<RecordDataCodec>("serverData", &V::serverData, &Names::ServerData).required());
    }
    friend bool operator==(const TransactionRecord&, const TransactionRecord&) = default;
};

}  // namespace tarvo
