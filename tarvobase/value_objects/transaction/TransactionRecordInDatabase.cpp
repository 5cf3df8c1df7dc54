#include "tarvobase/value_objects/transaction/TransactionRecordInDatabase.h"

#include "tarvobase/storage/DatabasePersistanceClass.h"

namespace tarvo {

namespace {

const TransactionRecordDatabaseConstants transactionRecordColumns;

EnsuredTable::Declaration transactionRecordTable() {
    auto& names = transactionRecordColumns;
    return {.columns = {{std::string(names.RecordID), "TEXT"},
                        {std::string(names.DeviceData), "BLOB"},
                        {std::string(names.ServerData), "BLOB"}},
            .keys = "UNIQUE (" + std::string(names.RecordID) + ")"};
}

}  // namespace

TransactionRecordInDatabase::TransactionRecordInDatabase(std::shared_ptr<DatabaseAdapter> databaseAdapter)
    : table_(std::move(databaseAdapter), std::string(transactionRecordColumns.TableName), transactionRecordTable()) {}

bool TransactionRecordInDatabase::storeTransactionRecordPersistance(const TransactionRecord& record) {
    return table_.replace(std::string(transactionRecordColumns.RecordID),
                          {transactionRecordColumns.getDictionary(record)});
}
bool TransactionRecordInDatabase::removeTransactionRecord(const std::string& recordID) {
    return table_.remove(columnIs(transactionRecordColumns.RecordID, recordID));
}
bool TransactionRecordInDatabase::removeTransactionRecords(const std::vector<std::string>& recordIDs) {
    return recordIDs.empty() || table_.remove(columnIn(transactionRecordColumns.RecordID, recordIDs));
}
TransactionRecordPersistanceDelegate::Found TransactionRecordInDatabase::getTransactionRecord(
    const std::string& recordID) {
    auto rows = table_.fetch(columnIs(transactionRecordColumns.RecordID, recordID));
    if (!rows) return ParserError::noData();
    if (rows->empty()) return std::optional<TransactionRecord>();
    auto record = transactionRecordColumns.getValue(rows->front());
    if (!record) return ParserError::typeConversionFailedForKey(record.error());
    return std::optional(std::move(record).value());
}

std::optional<bool> TransactionRecordInDatabase::hasTransactionRecord(const std::string& recordID) {
    FetchQuery query(table_.name(), columnIs(transactionRecordColumns.RecordID, recordID));
    query.columns = {"1"};
    auto rows = table_.fetch(query);
    return rows ? std::optional(!rows->empty()) : std::nullopt;
}
bool TransactionRecordInDatabase::updateDeviceData(const std::string& recordID, const ValueMap& deviceData) {
    auto row = transactionRecordColumns.getDictionary({.recordID = recordID, .deviceData = deviceData});
    std::string column(transactionRecordColumns.DeviceData);
    return table_.update({{column, row.valueOf(column)}}, columnIs(transactionRecordColumns.RecordID, recordID));
}

}  // namespace tarvo
