#include "tarvobase/records/CVRecordMapInDatabase.h"

#include "kelva_db/Database.h"
#include "tarvobase/records/Record.h"
#include "tarvobase/records/RecordUtil.h"
#include "tarvobase/value_objects/IdentifierConstants.h"

namespace tarvo {

namespace {

constexpr CVRecordMapDatabaseConstants names;

Criteria ofView(const std::string& cvId) { return columnIs(names.criteriaId, cvId); }

}  // namespace

std::string CVRecordMapInDatabase::getTableName(const std::string& moduleName) {
    return moduleName + std::string(CVRecordMapDatabaseConstants::tableNameSuffix);
}

void CVRecordMapInDatabase::store(const std::vector<ValueMap>& records, const std::string& cvId,
                                  const std::string& moduleName) {
    auto identifier = RecordUtil::getIdentifierFieldName(moduleName);
    std::vector<std::string> ids;
    for (auto& record : records) {
        auto id = record.find(identifier);
        if (id && id->asText()) ids.push_back(*id->asText());
    }
    storeIds(ids, cvId, moduleName);
}

void CVRecordMapInDatabase::store(const std::vector<Record>& records, const std::string& cvId,
                                  const std::string& moduleName) {
    std::vector<std::string> ids;
    for (auto& record : records)
        if (!record.recordId().empty()) ids.push_back(record.recordId());
    storeIds(ids, cvId, moduleName);
}

void CVRecordMapInDatabase::storeIds(const std::vector<std::string>& ids, const std::string& cvId,
                                     const std::string& moduleName) {
    std::vector<ValueMap> rows;
    rows.reserve(ids.size());
    for (auto& id : ids)
        rows.push_back({{std::string(names.criteriaId), cvId},
                        {std::string(names.recordId), id},
                        {std::string(names.moduleName), moduleName}});
    table(moduleName).store(std::move(rows));
}

void CVRecordMapInDatabase::delete_(const std::string& cvId, const std::vector<std::string>& recordIds,
                                    const std::string& moduleName) {
    table(moduleName).deleteObjects(Criteria::and_({ofView(cvId), columnIn(names.recordId, recordIds)}));
}

void CVRecordMapInDatabase::delete_(const std::string& cvId, const std::string& moduleName) {
    table(moduleName).deleteObjects(ofView(cvId));
}

Criteria CVRecordMapInDatabase::getFilterMappingCriteria(const std::string& cvId, const std::string& moduleName) {
    FetchQuery query(getTableName(moduleName), ofView(cvId));
    query.columns = {std::string(names.recordId)};
    return Criteria::custom(kelva::quotedName(FieldIdentifierConstants().id) + " in (" + query.sql() + ")",
                            query.parameters());
}

}  // namespace tarvo
