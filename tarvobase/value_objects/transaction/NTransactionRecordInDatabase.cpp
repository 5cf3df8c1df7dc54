#include "tarvobase/value_objects/transaction/NTransactionRecordInDatabase.h"

#include "tarvobase/storage/DatabasePersistanceClass.h"
#include "tarvobase/utils/ReplacedTexts.h"

namespace tarvo {

namespace {

const TransactionRecordDBMapper recordSidesMapper;

EnsuredTable::Declaration recordSidesTable() {
    auto& names = recordSidesMapper;
    return {.columns = {{std::string(names.recordId), "TEXT"},
                        {std::string(names.module), "TEXT"},
                        {std::string(names.deviceData), "TEXT"},
                        {std::string(names.serverData), "TEXT"}},
            .keys = "UNIQUE (" + std::string(names.recordId) + ", " + std::string(names.module) + ")"};
}

}  // namespace

NTransactionRecordInDatabase::NTransactionRecordInDatabase(std::shared_ptr<DatabaseAdapter> databaseAdapter)
    : table_(std::move(databaseAdapter), std::string(recordSidesMapper.tableName), recordSidesTable()) {}

bool NTransactionRecordInDatabase::storeTransactionRecord(const NTransactionRecord& record) {
    return table_.replace(std::string(recordSidesMapper.recordId), {recordSidesMapper.getDictionary(record)});
}

TransactionRecordPersistanceContract::Found NTransactionRecordInDatabase::getTransactionRecord(
    const std::string& recordId) {
    auto rows = table_.fetch(columnIs(recordSidesMapper.recordId, recordId));
    if (!rows) return ParserError::noData();
    if (rows->empty()) return std::optional<NTransactionRecord>();
    auto record = recordSidesMapper.getValue(rows->front());
    if (!record) return ParserError::typeConversionFailedForKey(record.error().failedPath);
    return std::optional(std::move(record).value());
}

bool NTransactionRecordInDatabase::removeTransactionRecord(const std::string& recordId) {
    return table_.remove(columnIs(recordSidesMapper.recordId, recordId));
}

/// A record that cannot be read moves all the same. Texts are replaced where they are the id, so that a longer id that
/// begins like it stays.
bool NTransactionRecordInDatabase::replaceRecordId(const std::string& newId, const std::string& formerId) {
    auto found = getTransactionRecord(formerId);
    if (!found && found.error() == ParserError::noData()) return false;
    if (found && !found.value()) return true;
    ValueMap moved{{std::string(recordSidesMapper.recordId), newId}};
    if (found) {
        auto record = *found.value();
        if (replaceTexts(record.deviceData, formerId, newId))
            moved.set(recordSidesMapper.deviceData,
                      recordSidesMapper.getDictionary(record).valueOf(recordSidesMapper.deviceData));
    }
    return table_.update(std::move(moved), columnIs(recordSidesMapper.recordId, formerId));
}

}  // namespace tarvo
