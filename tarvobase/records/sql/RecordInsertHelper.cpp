#include "tarvobase/records/sql/RecordInDatabase.h"
#include "tarvobase/records/wire/RecordConversion.h"
#include "tarvobase/storage/DatabasePersistanceClass.h"

// Operations on the record tables for callers that have the module's fields already.
namespace tarvo {

std::string RecordInDatabase::getTableName(const ModuleIdentifier& moduleId) { return moduleId.rawValue() + "Records"; }

bool RecordInDatabase::saveNetworkRecord(const ValueMap& wireRecord, const ModuleIdentifier& moduleId,
                                         const FieldList& metadataList) {
    return saveNetworkRecordList({wireRecord}, moduleId, metadataList);
}

bool RecordInDatabase::saveNetworkRecordList(std::vector<ValueMap> wireRecords, const ModuleIdentifier& moduleId,
                                             const FieldList& metadataList) {
    auto keysOf = [&](const std::vector<const Metadata*>& fields) {
        Names keys;
        for (auto field : fields) keys.push_back(metadataList.identifierOf(*field));
        return keys;
    };
    auto lookups = keysOf(metadataList.getAllLookupFields());
    auto dates = keysOf(metadataList.getAllDateAndDateTimeFields());
    wireRecords = underColumns(wireRecords, metadataList);
    for (auto& record : wireRecords) {
        createLookupFields(record, lookups, metadataList);
        convertDateToTimestamp(record, dates, metadataList);
        record = rowOf(record, metadataList);
    }
    return saveRecordDictionary(wireRecords, moduleId);
}

bool RecordInDatabase::saveRecordDictionary(const ValueMap& dictionary, const ModuleIdentifier& moduleId) {
    return saveRecordDictionary(std::vector<ValueMap>{dictionary}, moduleId);
}

bool RecordInDatabase::saveRecordDictionary(const std::vector<ValueMap>& dictionaries,
                                            const ModuleIdentifier& moduleId) {
    auto refused = TableAccess(databaseAdapter_, getTableName(moduleId)).storeAccepted(MapRowSource(dictionaries));
    return refused && refused->empty();
}

bool RecordInDatabase::saveRecord(const Record& record, const ModuleIdentifier& moduleId,
                                  const FieldList& metadataList) {
    return saveRecordList({record}, moduleId, metadataList);
}

bool RecordInDatabase::saveRecordList(const std::vector<Record>& records, const ModuleIdentifier& moduleId,
                                      const FieldList& metadataList) {
    std::vector<ValueMap> rows;
    for (auto& record : records) rows.push_back(rowOf(record, metadataList.naming(), &metadataList));
    return saveRecordDictionary(rows, moduleId);
}

bool RecordInDatabase::modifyRecord(const Record& record, const ModuleIdentifier& moduleId,
                                    const FieldList& metadataList) {
    return modifyRecordList({record}, moduleId, metadataList);
}

bool RecordInDatabase::modifyRecordList(const std::vector<Record>& records, const ModuleIdentifier& moduleId,
                                        const FieldList& metadataList) {
    std::vector<ValueMap> rows;
    for (auto& record : records) rows.push_back(rowOf(record, metadataList.naming(), &metadataList));
    return modify(rows, moduleId.rawValue(), metadataList.naming());
}

}  // namespace tarvo
