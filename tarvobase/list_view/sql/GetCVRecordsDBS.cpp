#include "tarvobase/list_view/sql/GetCVRecordsDBS.h"

#include <algorithm>
#include <utility>

#include "kelva_db/Database.h"
#include "platform/Text.h"
#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/list_view/ListOrderIndexes.h"
#include "tarvobase/metadata/GetFieldListDM.h"
#include "tarvobase/metadata/ModuleInfo.h"
#include "tarvobase/records/RecordUtil.h"
#include "tarvobase/records/sql/CustomViewQueryFormation.h"
#include "tarvobase/records/sql/FilterToWhereConverter.h"
#include "tarvobase/storage/DatabasePersistanceClass.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"

namespace tarvo {

namespace {

using CVSort = GetCVRecordsDBS::CVSort;

/// Up to this number SQLite looks the view's records up and sorts them, which costs some microseconds per record. Above
/// it, SQLite walks the record table in the list's order and checks for each row whether it belongs to the view. Which
/// way is quicker depends on the view's share of the table; between one and a few thousand records both are quick.
constexpr std::int64_t fewRecords = 2000;

/// Returns a term over columns of the table. The name of a selected column is replaced by its expression, so that the
/// term also works in an index and in a query that does not select the column.
SortDescriptor termOf(const SortDescriptor& descriptor, const std::vector<SortDescriptorUtil::SelectColumn>& columns) {
    for (auto& column : columns)
        if (descriptor.colName() == column.name)
            return SortDescriptor(
                {.colName = column.expression, .ascending = descriptor.ascending(), .numeric = descriptor.numeric()});
    return descriptor;
}

std::string termsOf(const CVSort& sort) {
    std::vector<std::string> terms;
    for (auto& descriptor : sort.descriptors) terms.push_back(termOf(descriptor, sort.columns).sql());
    return text::join(terms, ", ");
}

/// Returns the columns to read. A host may name a field by either naming. Columns that the table does not have are left
/// out, which is logged once.
std::vector<std::string> columnsOf(const FilterRecordsQuery& query, const TableAccess& table) {
    auto& metadata = query.moduleInfo.metadata;
    auto asked = query.request.columns;
    if (asked)
        for (auto& name : *asked)
            if (auto field = metadata.getField(name) ? nullptr : metadata.getFieldByApiName(name))
                name = metadata.identifierOf(*field);
    auto known = table.columns();
    std::vector<std::string> columns;
    for (auto& name : RecordInDatabase::getColumnNameList(asked, query.moduleInfo))
        if (table.has(name, known)) columns.push_back(kelva::quotedName(name));
    return columns;
}

/// Returns the view's own condition, which is empty for the view of all records, or nullopt if only the server can
/// evaluate it.
std::optional<std::string> ownCondition(const CustomView& view, const FieldList& fields) {
    auto condition = CustomViewQueryFormation::getWhereCondition(view, fields);
    if (!condition) return std::nullopt;
    // Further conditions are joined to it, which may have an OR.
    return condition->empty() ? "" : "(" + *condition + ")";
}

std::vector<Criteria> furtherConditions(const FilterRecordsQuery& query) {
    std::vector<Criteria> conditions;
    if (query.request.filters)
        if (auto text = FilterToWhereConverter::getWhereStatement(*query.request.filters))
            conditions.push_back(Criteria::custom(*text));
    if (query.criteria) conditions.insert(conditions.end(), query.criteria->begin(), query.criteria->end());
    return conditions;
}

/// Finds the rows of the page first, from an index alone if there is one in this order, and then reads their columns,
/// so that skipped rows cost no look at their records.
std::optional<Rows> fetchRowsFirst(DatabaseAdapter& adapter, FetchQuery query, const std::string& terms) {
    auto columns = std::exchange(query.columns, {"_rowid_"});
    return adapter.fetchObjects("SELECT " + text::join(columns, ", ") + " FROM " + query.tableName +
                                    " WHERE _rowid_ IN (" + query.sql() + ") ORDER BY " + terms,
                                query.parameters());
}

}  // namespace

GetCVRecordsDBS::GetCVRecordsDBS(std::shared_ptr<DatabaseAdapter> databaseAdapter,
                                 std::shared_ptr<FilterRecordMapPersistanceDelegate> filterRecordMapPersistance)
    : RecordInDatabase(databaseAdapter, FieldListAssembler::getFieldListDM(databaseAdapter)),
      databaseAdapter_(std::move(databaseAdapter)),
      filterRecordMapPersistance_(std::move(filterRecordMapPersistance)) {}

CVSort GetCVRecordsDBS::getCVSortDescriptor(const FilterProtocol& filter, const ModuleInfo& moduleInfo) const {
    return sortOf(filter.sortFieldList(moduleInfo.metadata), moduleInfo);
}

CVSort GetCVRecordsDBS::sortOf(const std::vector<SortField>& sortFields, const ModuleInfo& moduleInfo) const {
    CVSort sort;
    if (sortFields.size() > 1)
        sort = SortDescriptorUtil::getSortList(moduleInfo, {sortFields.front()}, databaseAdapter_);
    auto& last = sortFields.back();
    sort.descriptors.push_back(
        sortDescriptor({kelva::quotedName(last.column), last.isAscending}, moduleInfo.metadata.getField(last.column)));
    return sort;
}

std::optional<std::vector<Record>> GetCVRecordsDBS::getRecords(const FilterRecordsQuery& query) {
    auto sort = sortOf(sortFieldsOf(query.filter, query.moduleInfo), query.moduleInfo);
    auto [records, isLong] = fetch(query, sort);
    if (isLong)
        ListOrderIndexes::keep(databaseAdapter_, RecordUtil::getTableName(query.moduleInfo.moduleName()),
                               termsOf(sort));
    return std::move(records);
}

std::optional<Record> GetCVRecordsDBS::getLastRecord(const FilterProtocol& filter, const ModuleInfo& moduleInfo) {
    GetListFilterRecordsParams request;
    request.moduleName = moduleInfo.moduleName();
    request.criteriaId = filter.filterId();
    request.limit = 1;
    auto found =
        fetch({.filter = filter, .moduleInfo = moduleInfo, .request = request}, reversedSortOf(filter, moduleInfo));
    if (!found.records || found.records->empty()) return std::nullopt;
    return std::move(found.records->front());
}

/// Every term of an order is reversed with its field, so the last row is the first row of the reversed order.
CVSort GetCVRecordsDBS::reversedSortOf(const FilterProtocol& filter, const ModuleInfo& moduleInfo) const {
    auto sortFields = sortFieldsOf(filter, moduleInfo);
    for (auto& sortField : sortFields) sortField.isAscending = !sortField.isAscending;
    return sortOf(sortFields, moduleInfo);
}

/// Walks the list from its end until it meets another record. Few records are at the end, so the first steps are short.
std::optional<std::vector<std::string>> GetCVRecordsDBS::getIdsAtEnd(const FilterProtocol& filter,
                                                                     const ModuleInfo& moduleInfo,
                                                                     const std::set<std::string>& candidates) {
    constexpr std::int64_t firstStep = 32, growth = 8;
    if (!databaseAdapter_) return std::nullopt;
    GetListFilterRecordsParams request;
    FilterRecordsQuery query{.filter = filter, .moduleInfo = moduleInfo, .request = request};
    FetchQuery walk(kelva::quotedName(RecordUtil::getTableName(moduleInfo.moduleName())));
    walk.filter(*criteriaOf(query, isLong(query)));
    walk.columns = {kelva::quotedName(moduleInfo.metadata.naming().constant->id)};
    walk.sortBy = {SortDescriptor::customOrderBy(termsOf(reversedSortOf(filter, moduleInfo)))};
    walk.offset = 0;
    std::vector<std::string> atEnd;
    for (std::int64_t step = firstStep;; step *= growth) {
        walk.limit = step;
        auto rows = databaseAdapter_->fetchObjects(walk);
        if (!rows) return std::nullopt;
        for (auto row : *rows) {
            std::string id(row.cell(0).asText().value_or(""));
            if (candidates.contains(id))
                atEnd.push_back(std::move(id));
            else if (!hasUnsentEdits(id, moduleInfo.metadata))
                return atEnd;
        }
        if (static_cast<std::int64_t>(rows->size()) < step) return atEnd;
        walk.offset = *walk.offset + step;
    }
}

/// Returns the sort fields of a view. A view may be sorted by a field that the table has no column for; the default
/// order is then better than no list.
std::vector<SortField> GetCVRecordsDBS::sortFieldsOf(const FilterProtocol& filter, const ModuleInfo& moduleInfo) const {
    auto sortFields = filter.sortFieldList(moduleInfo.metadata);
    TableAccess table(databaseAdapter_, RecordUtil::getTableName(moduleInfo.moduleName()));
    if (sortFields.size() > 1 && databaseAdapter_ && !table.has(sortFields.front().column, table.columns()))
        sortFields.erase(sortFields.begin());
    return sortFields;
}

/// Returns the condition that a record belongs to the view, or nullopt if every record does.
std::optional<Criteria> GetCVRecordsDBS::criteriaOf(const FilterRecordsQuery& query, bool isLong) const {
    auto& moduleName = query.moduleInfo.moduleName();
    auto& viewId = query.filter.filterId();
    auto& map = *filterRecordMapPersistance_;
    std::optional<std::string> condition;
    if (query.conditionOfEmptyMap && !isLong && !map.hasMoreThan(0, viewId, moduleName))
        condition = ownCondition(*query.conditionOfEmptyMap, query.moduleInfo.metadata);
    if (condition && condition->empty()) return std::nullopt;
    auto ofView = condition ? Criteria::custom(*condition)
                  : isLong  ? map.getRowMappingCriteria(viewId, moduleName)
                            : map.getFilterMappingCriteria(viewId, moduleName);
    if (!query.unsyncedCriteria) return ofView;
    return Criteria::or_({std::move(ofView), *query.unsyncedCriteria});
}

bool GetCVRecordsDBS::isLong(const FilterRecordsQuery& query) const {
    return filterRecordMapPersistance_->hasMoreThan(fewRecords, query.filter.filterId(), query.moduleInfo.moduleName());
}

GetCVRecordsDBS::Found GetCVRecordsDBS::fetch(const FilterRecordsQuery& query, const CVSort& sort) const {
    if (!databaseAdapter_) return {};
    auto& moduleName = query.moduleInfo.moduleName();
    bool isLong = this->isLong(query);
    auto terms = termsOf(sort);
    auto table = RecordUtil::getTableName(moduleName);
    FetchQuery fetch(kelva::quotedName(table));
    if (auto criteria = criteriaOf(query, isLong)) fetch.filter(*std::move(criteria));
    for (auto& condition : furtherConditions(query)) fetch.filter(std::move(condition));
    fetch.columns = columnsOf(query, TableAccess(databaseAdapter_, table));
    for (auto& column : sort.columns) fetch.columns.push_back(column.sql());
    fetch.sortBy = {SortDescriptor::customOrderBy(terms)};
    fetch.offset = query.request.from;
    fetch.limit = query.request.limit;

    auto rows = isLong && fetch.limit ? fetchRowsFirst(*databaseAdapter_, std::move(fetch), terms)
                                      : databaseAdapter_->fetchObjects(fetch);
    if (!rows) return {};
    return {recordsOf(*rows, query.moduleInfo.metadata), isLong};
}

}  // namespace tarvo
