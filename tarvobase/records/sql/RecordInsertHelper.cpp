#include "tarvobase/records/sql/RecordInDatabase.h"
#include "tarvobase/records/wire/RecordConversion.h"
#include "tarvobase/storage/DatabasePersistanceClass.h"

// Operations on the record tables for callers that have the module's fields already.
namespace tarvo {

std::string RecordInDatabase::getTableName(const ModuleIdentifier& moduleId) { return moduleId.rawValue() + "Records"; }

void RecordInDatabase::saveNetworkRecord(const ValueMap& wireRecord, const ModuleIdentifier& moduleId,
                                         const FieldList& metadataList) {
    saveNetworkRecordList({wireRecord}, moduleId, metadataList);
}

void RecordInDatabase::saveNetworkRecordList(std::vector<ValueMap> wireRecords, const ModuleIdentifier& moduleId,
                                             const FieldList& metadataList) {
    auto keysOf = [&](const std::vector<const Metadata*>& fields) {
        Names keys;
        for (auto field : fields) keys.push_back(metadataList.identifierOf(*field));
        return keys;
    };
    auto lookups = keysOf(metadataList.getAllLookupFields());
    auto dates = keysOf(metadataList.getAllDateAndDateTimeFields());
    for (auto& record : wireRecords) {
        createLookupFields(record, lookups, metadataList);
        convertDateToTimestamp(record, dates, metadataList);
    }
    saveRecordDictionary(wireRecords, moduleId);
}

void RecordInDatabase::saveRecordDictionary(const ValueMap& dictionary, const ModuleIdentifier& moduleId) {
    saveRecordDictionary(std::vector<ValueMap>{dictionary}, moduleId);
}

void RecordInDatabase::saveRecordDictionary(const std::vector<ValueMap>& dictionaries,
                                            const ModuleIdentifier& moduleId) {
    TableAccess(databaseAdapter_, getTableName(moduleId)).storeAccepted(MapRowSource(dictionaries));
}

void RecordInDatabase::saveRecord(const Record& record, const ModuleIdentifier& moduleId,
                                  const FieldList& metadataList) {
    saveRecordList({record}, moduleId, metadataList);
}

void RecordInDatabase::saveRecordList(const std::vector<Record>& records, const ModuleIdentifier& moduleId,
                                      const FieldList& metadataList) {
    std::vector<ValueMap> rows;
    for (auto& record : records) rows.push_back(rowOf(record, metadataList.naming()));
    saveRecordDictionary(rows, moduleId);
}

void RecordInDatabase::modifyRecord(const Record& record, const ModuleIdentifier& moduleId,
                                    const FieldList& metadataList) {
    modifyRecordList({record}, moduleId, metadataList);
}

void RecordInDatabase::modifyRecordList(const std::vector<Record>& records, const ModuleIdentifier& moduleId,
                                        const FieldList& metadataList) {
    std::vector<ValueMap> rows;
    for (auto& record : records) rows.push_back(rowOf(record, metadataList.naming()));
    modify(rows, moduleId.rawValue(), metadataList.naming());
}

}  // namespace tarvo
