#pragma once

#include <string>

#include "tarvobase/storage/Mapper.h"
#include "tarvobase/value_objects/naming/ModuleIdentifier.h"

namespace tarvo {

struct NTransactionRecord;
struct TransactionModuleCodec;
struct RecordDataCodec;

struct TransactionRecordMapper : StoredMapper<TransactionRecordMapper, NTransactionRecord> {
    std::string_view tableName = of("TransactionRecord", "TRANSACTIONS_RECORD");
    std::string_view recordId = of("recordId", "record_id");
    std::string_view module = of("module", "module_name");
    std::string_view deviceData = of("deviceData", "device_data");
    std::string_view serverData = of("serverData", "server_data");
};
struct TransactionRecordDBMapper : TableTwin<TransactionRecordMapper> {};

/// The two sides of a record with changes in the current queue. A table holds them as JSON text, which leaves out what
/// JSON cannot express.
struct NTransactionRecord {
    std::string recordId;
    ModuleIdentifier module = ModuleIdentifier::Case::leads;
    ValueMap deviceData;  ///< the record as the user last saved it
    ValueMap serverData;  ///< the record as it was before its first change that waits

    static constexpr auto fields() {
        using V = NTransactionRecord;
        using Names = TransactionRecordMapper;
        return describe(field("recordId", &V::recordId, &Names::recordId),
                        fieldBy<TransactionModuleCodec>("module", &V::module, &Names::module),
                        fieldBy<RecordDataCodec>("deviceData", &V::deviceData, &Names::deviceData),
                        fieldBy<RecordDataCodec>("serverData", &V::serverData, &Names::serverData));
    }
    friend bool operator==(const NTransactionRecord&, const NTransactionRecord&) = default;
};

}  // namespace tarvo
