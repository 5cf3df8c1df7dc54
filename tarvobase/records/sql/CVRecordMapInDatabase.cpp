#include "tarvobase/records/sql/CVRecordMapInDatabase.h"

#include <span>

#include "kelva_db/Database.h"
#include "tarvobase/records/Record.h"
#include "tarvobase/records/RecordUtil.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"

namespace tarvo {

namespace {

constexpr CVRecordMapDatabaseConstants mapNames;

Criteria belongsToView(const std::string& cvId) { return columnIs(mapNames.criteriaId, cvId); }

/// The rows of a view's records, without a map per row: a page of the first download has thousands of rows.
class MapRows final : public RowSource {
public:
    MapRows(const std::vector<std::string>& ids, const std::string& cvId, const std::string& moduleName)
        : ids_(ids), cvId_(cvId), moduleName_(moduleName) {}
    std::span<const std::string> columns() const override { return columns_; }
    std::size_t rowCount() const override { return ids_.size(); }
    ValueView cell(std::size_t row, std::size_t column) const override {
        return ValueView::text(column == 0 ? cvId_ : column == 1 ? ids_[row] : moduleName_);
    }
    bool mayHoldObjects() const override { return false; }

private:
    const std::vector<std::string> columns_{std::string(mapNames.criteriaId), std::string(mapNames.recordId),
                                            std::string(mapNames.moduleName)};
    const std::vector<std::string>& ids_;
    const std::string &cvId_, &moduleName_;
};

}  // namespace

std::string CVRecordMapInDatabase::getTableName(const std::string& moduleName) {
    return moduleName + std::string(CVRecordMapDatabaseConstants::tableNameSuffix);
}

bool CVRecordMapInDatabase::store(const std::vector<ValueMap>& records, const std::string& cvId,
                                  const std::string& moduleName) {
    auto identifier = RecordUtil::getIdentifierFieldName(moduleName);
    std::vector<std::string> ids;
    for (auto& record : records) {
        auto id = record.find(identifier);
        if (id && id->asText()) ids.push_back(*id->asText());
    }
    return store(ids, cvId, moduleName);
}

bool CVRecordMapInDatabase::store(const std::vector<Record>& records, const std::string& cvId,
                                  const std::string& moduleName) {
    std::vector<std::string> ids;
    for (auto& record : records)
        if (!record.recordId().empty()) ids.push_back(record.recordId());
    return store(ids, cvId, moduleName);
}

bool CVRecordMapInDatabase::store(const std::vector<std::string>& ids, const std::string& cvId,
                                  const std::string& moduleName) {
    if (!databaseAdapter_) return false;
    return ids.empty() || databaseAdapter_->insertInto(getTableName(moduleName), MapRows(ids, cvId, moduleName));
}

bool CVRecordMapInDatabase::delete_(const std::string& cvId, const std::vector<std::string>& recordIds,
                                    const std::string& moduleName) {
    return table(moduleName)
        .deleteObjects(Criteria::and_({belongsToView(cvId), columnIn(mapNames.recordId, recordIds)}));
}

bool CVRecordMapInDatabase::delete_(const std::string& cvId, const std::string& moduleName) {
    return table(moduleName).deleteObjects(belongsToView(cvId));
}

bool CVRecordMapInDatabase::deleteFromAllViews(const std::vector<std::string>& recordIds,
                                               const std::string& moduleName) {
    auto map = table(moduleName);
    return databaseAdapter_ && (map.columns().empty() || map.deleteObjects(columnIn(mapNames.recordId, recordIds)));
}

Criteria CVRecordMapInDatabase::getFilterMappingCriteria(const std::string& cvId, const std::string& moduleName) {
    FetchQuery query(kelva::quotedName(getTableName(moduleName)), belongsToView(cvId));
    query.columns = {std::string(mapNames.recordId)};
    return Criteria::custom(kelva::quotedName(FieldIdentifierConstants().id) + " in (" + query.sql() + ")",
                            query.parameters());
}

Criteria CVRecordMapInDatabase::getRowMappingCriteria(const std::string& cvId, const std::string& moduleName) {
    FetchQuery query(kelva::quotedName(getTableName(moduleName)), belongsToView(cvId));
    query.columns = {"1"};
    auto id = kelva::quotedName(RecordUtil::getTableName(moduleName)) + "." +
              kelva::quotedName(FieldIdentifierConstants().id);
    query.filter(Criteria::equalTo(std::string(mapNames.recordId), Criteria::ColumnType::column(id)));
    return Criteria::exists(query.sql(), query.parameters());
}

bool CVRecordMapInDatabase::hasMoreThan(std::int64_t count, const std::string& cvId, const std::string& moduleName) {
    FetchQuery query(kelva::quotedName(getTableName(moduleName)), belongsToView(cvId));
    query.columns = {"1"};
    query.limit = 1;
    query.offset = count;
    auto rows = table(moduleName).fetch(query);
    return rows && rows->size() > 0;
}

std::optional<std::int64_t> CVRecordMapInDatabase::count(const std::string& cvId, const std::string& moduleName) {
    return databaseAdapter_ ? databaseAdapter_->count(getTableName(moduleName), belongsToView(cvId)) : std::nullopt;
}

}  // namespace tarvo
