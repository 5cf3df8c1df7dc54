#include "tarvobase/records/sql/RecordInDatabase.h"

#include <unordered_set>

#include "kelva_db/Database.h"
#include "platform/Log.h"
#include "platform/Text.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/metadata/GetFieldListDM.h"
#include "tarvobase/metadata/ModuleInfo.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/records/SharedActivities.h"
#include "tarvobase/records/sql/CustomViewQueryFormation.h"
#include "tarvobase/records/sql/DependentRecords.h"
#include "tarvobase/records/sql/FilterToWhereConverter.h"
#include "tarvobase/records/sql/RecordQueries.h"
#include "tarvobase/records/sql/SortFieldToSortDescriptor.h"
#include "tarvobase/records/sql/UnsentChanges.h"
#include "tarvobase/records/wire/ModuleParser.h"
#include "tarvobase/records/wire/RecordConversion.h"
#include "tarvobase/records/wire/RecordPage.h"
#include "tarvobase/records/wire/WireRecords.h"
#include "tarvobase/storage/DatabasePersistanceClass.h"
#include "tarvobase/utils/TemporaryIds.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"

namespace tarvo {

namespace {

using Names = RecordPersistanceDelegate::Names;

/// Returns the column of `Record::recordId`.
std::string idColumn(const std::string& moduleName, const FieldIdentifier& naming) {
    return std::string(RecordUtil::getIdentifierFieldName(moduleName, naming));
}

/// Returns the condition for the row that `row` is a new content of. Several rows may have one record id, as the rows
/// of a participant in several events have; so a row that names its own key is found by that as well. Returns nullopt
/// if the row has no record id.
std::optional<Criteria> conditionFor(const ValueMap& row, const std::string& moduleName,
                                     const FieldIdentifier& naming) {
    auto column = idColumn(moduleName, naming), key = std::string(naming.constant->id);
    auto id = row.find(column), ownKey = row.find(key);
    if (!id || !id->asText()) return std::nullopt;
    if (column == key || !ownKey || !ownKey->asText()) return columnIs(column, *id->asText());
    return Criteria::and_({columnIs(column, *id->asText()), columnIs(key, *ownKey->asText())});
}

/// Returns the id of a row if it is a text that is not empty, and null otherwise.
const std::string* usableId(const ValueMap& row, std::string_view identifier) {
    auto id = row.find(identifier);
    return id && id->asText() && !id->asText()->empty() ? id->asText() : nullptr;
}

std::optional<FieldList> presentOrLogged(GetFieldListDM::FieldListResult fields, const std::string& moduleName) {
    if (fields) return std::move(fields).value();
    platform::log(platform::LogLevel::warning, "records", "no fields of the module " + moduleName);
    return std::nullopt;
}

void logLeftOut(std::size_t count, const std::string& moduleName) {
    if (count > 0)
        platform::log(platform::LogLevel::warning, "records",
                      "records of " + moduleName + " without an id were left out: " + std::to_string(count));
}

/// Returns the ids of a batch without those of the rows that the table refuses, which are logged.
Names withoutRefused(const Names& ids, const std::vector<std::size_t>& refused, const std::string& moduleName) {
    if (refused.empty()) return ids;
    Names accepted, left;
    auto next = refused.begin();
    for (std::size_t row = 0; row < ids.size(); ++row) {
        bool isRefused = next != refused.end() && *next == row;
        (isRefused ? left : accepted).push_back(ids[row]);
        if (isRefused) ++next;
    }
    platform::log(platform::LogLevel::warning, "records",
                  "the table of " + moduleName + " refuses the records " + text::join(left, ", "));
    return accepted;
}

/// The rows of wire dictionaries in the form of the table. Records without an id are left out.
struct WireRows {
    std::vector<ValueMap> rows;
    std::vector<const ValueMap*> wire;
    Names ids;

    WireRows(const std::vector<ValueMap>& wireRecords, const FieldList& fields) {
        RecordConversion conversion(fields);
        auto identifier = RecordUtil::getIdentifierFieldName(fields.moduleName(), fields.naming());
        for (auto& record : wireRecords) {
            auto row = conversion.toRow(record);
            auto id = usableId(row, identifier);
            if (!id) continue;
            ids.push_back(*id);
            rows.push_back(std::move(row));
            wire.push_back(&record);
        }
    }

    std::vector<NestedRecords> nestedRecords(std::string_view wireName) const {
        auto key = ModuleParser::systemKey(wireName);
        std::vector<NestedRecords> nested;
        for (std::size_t i = 0; i < wire.size(); ++i) {
            auto value = wire[i]->find(key);
            auto list = value ? value->asList() : nullptr;
            auto isMap = [](auto& item) { return item.kind() == ValueKind::map; };
            if (!list || !std::all_of(list->begin(), list->end(), isMap)) continue;
            nested.push_back({ids[i], {}});
            for (auto& item : *list) nested.back().records.push_back(*item.asMap());
        }
        return nested;
    }
};

std::vector<NestedRecords> nestedRecords(const RecordPage& page, std::string_view wireName) {
    std::vector<NestedRecords> nested;
    for (auto& list : page.nestedRecords(wireName))
        nested.push_back({std::string(page.recordId(list.row)), std::move(list.records)});
    return nested;
}

Names idsOf(const RecordPage& page) {
    Names ids;
    ids.reserve(page.rowCount());
    for (std::size_t row = 0; row < page.rowCount(); ++row) ids.emplace_back(page.recordId(row));
    return ids;
}

/// The records of a page as edits: columns that a record does not name are left alone.
class EditedRecords final : public RowSource {
public:
    explicit EditedRecords(const RecordPage& page) : page_(page) {}
    std::span<const std::string> columns() const override { return page_.columns(); }
    std::size_t rowCount() const override { return page_.rowCount(); }
    ValueView cell(std::size_t row, std::size_t column) const override { return page_.cell(row, column); }
    bool isUniform() const override { return false; }
    bool hasCell(std::size_t row, std::size_t column) const override { return page_.names(row, column); }
    bool mayHoldObjects() const override { return page_.mayHoldObjects(); }

private:
    const RecordPage& page_;
};

/// Returns the condition of a view, or an empty text if the view cannot be evaluated locally.
std::string conditionOf(const CustomView& customView, const FieldList& fields) {
    auto condition = CustomViewQueryFormation::getWhereCondition(customView, fields);
    if (condition) return condition.value();
    platform::log(platform::LogLevel::warning, "records", "no local condition for view " + customView.viewID);
    return "";
}

std::string conditionOf(const std::vector<ColumnFilter>& filters, const std::string& moduleName) {
    return FilterToWhereConverter::getWhereStatement(filters, moduleName).value_or("");
}

std::optional<Criteria> allOf(const std::vector<std::string>& conditions) {
    auto text = RecordQueries::allOf(conditions);
    return text.empty() ? std::nullopt : std::optional(Criteria::custom(text));
}

std::optional<Criteria> criteriaOf(const RecordQuery& query, const FieldList& fields) {
    std::vector<std::string> conditions;
    if (query.filters) conditions.push_back(conditionOf(*query.filters, query.module.moduleName));
    if (query.customView) conditions.push_back(conditionOf(*query.customView, fields));
    if (query.columnNamesAndValues) conditions.push_back(RecordQueries::getWhereString(*query.columnNamesAndValues));
    if (query.equalColumnNames) conditions.push_back(RecordQueries::getWhereString(*query.equalColumnNames));
    if (query.customQuery) conditions.push_back(*query.customQuery);
    return allOf(conditions);
}

std::optional<Criteria> criteriaOf(const ViewRecordQuery& query) {
    std::vector<std::string> conditions{conditionOf(query.customView, query.moduleInfo.metadata)};
    if (query.filters) conditions.push_back(conditionOf(*query.filters, query.moduleInfo.moduleName()));
    return allOf(conditions);
}

/// Reads a record by the id that a screen holds, which may be a temporary one for days after the server gave the record
/// its own. The row is looked for first: once it is gone, the alias is stored.
template <class Read>
std::optional<Record> readByAnyId(RecordIdAliases& aliases, const std::string& moduleName, const std::string& recordId,
                                  const Read& read) {
    auto record = read(recordId);
    if (record || !isTemporaryRecordId(recordId)) return record;
    auto currentId = SharedActivities::currentId(aliases, moduleName, recordId);
    return currentId == recordId ? std::nullopt : read(currentId);
}

template <class Term>
Names columnsOf(const std::vector<Term>& terms) {
    Names columns;
    for (auto& term : terms) columns.push_back(term.column);
    return columns;
}

}  // namespace

/// The columns, the order and the range of a read.
struct RecordInDatabase::Selection {
    std::optional<Names> columnsToFetch{};
    RecordQueries::UnknownNames unknownNames = RecordQueries::UnknownNames::drop;
    std::vector<SortDescriptor> order{};
    Names sortColumns{};
    std::optional<std::int64_t> from{};
    std::optional<std::int64_t> limit{};
};

RecordInDatabase::RecordInDatabase(std::shared_ptr<DatabaseAdapter> databaseAdapter,
                                   std::shared_ptr<GetFieldListDM> fieldLists)
    : databaseAdapter_(std::move(databaseAdapter)),
      fieldLists_(std::move(fieldLists)),
      olderQueue_(Stores::over(databaseAdapter_).transactions()),
      currentQueue_(Stores::over(databaseAdapter_).currentTransactions()),
      aliases_(Stores::over(databaseAdapter_).recordIdAliases()) {}

std::shared_ptr<RecordInDatabase> RecordInDatabase::make(const std::shared_ptr<DatabaseAdapter>& databaseAdapter) {
    return std::make_shared<RecordInDatabase>(databaseAdapter, FieldListAssembler::getFieldListDM(databaseAdapter));
}

TableAccess RecordInDatabase::tableOf(const std::string& moduleName) const {
    return {databaseAdapter_, RecordUtil::getTableName(moduleName)};
}

std::optional<FieldList> RecordInDatabase::fieldsOf(const std::string& moduleName) const {
    return presentOrLogged(fieldLists_->getFields(moduleName, std::nullopt), moduleName);
}
/// Values are stored and read by the fields alone; picklists give orders and conditions.
std::optional<FieldList> RecordInDatabase::fieldsForValues(const std::string& moduleName,
                                                           const std::optional<Names>& columns) const {
    return presentOrLogged(fieldLists_->getFieldsWithoutPicklists(moduleName, columns), moduleName);
}

// Storing

bool RecordInDatabase::storeRecord(const ValueMap& wireRecord, const std::string& moduleName) {
    return storeRecord(std::vector<ValueMap>{wireRecord}, moduleName);
}

bool RecordInDatabase::storeRecord(const std::vector<ValueMap>& wireRecords, const std::string& moduleName) {
    auto fields = fieldsForValues(moduleName);
    if (!fields) return false;
    WireRows records(wireRecords, *fields);
    logLeftOut(wireRecords.size() - records.rows.size(), moduleName);
    DependentRecords dependents(databaseAdapter_, *fieldLists_, *fields,
                                [&](std::string_view wireName) { return records.nestedRecords(wireName); });
    auto stored = store(MapRowSource(records.rows), records.ids, dependents, *fields, [](auto&) { return true; });
    return stored && stored->size() == wireRecords.size();
}

std::optional<Names> RecordInDatabase::storePage(const WireRecords& wireRecords, const std::string& moduleName,
                                                 PageWork alongside) {
    auto fields = fieldsForValues(moduleName);
    if (!fields) return std::nullopt;
    RecordPage page(wireRecords.document, wireRecords.list, *fields);
    logLeftOut(page.leftOut(), moduleName);
    DependentRecords dependents(databaseAdapter_, *fieldLists_, *fields,
                                [&](std::string_view wireName) { return nestedRecords(page, wireName); });
    return store(page, idsOf(page), dependents, *fields, alongside);
}

/// Stores rows, what depends on them and what the caller adds as one transaction. Everything is converted before it
/// begins, so that other writers wait for statements only.
std::optional<Names> RecordInDatabase::store(const RowSource& rows, const Names& ids,
                                             const DependentRecords& dependents, const FieldList& fields,
                                             PageWork alongside) const {
    std::optional<Names> stored;
    auto storeAll = [&] {
        if (!dependents.store()) return false;
        stored = storeRows(rows, ids, fields.moduleName());
        return stored && alongside(*stored);
    };
    bool isCommitted =
        databaseAdapter_ && databaseAdapter_->joinTransaction("store records of " + fields.moduleName(), [&] {
            return UnsentChanges(databaseAdapter_, {olderQueue_, currentQueue_}, fields).layOver(ids, storeAll);
        });
    return isCommitted ? std::move(stored) : std::nullopt;
}

/// Returns the ids of the rows that are stored.
std::optional<Names> RecordInDatabase::storeRows(const RowSource& rows, const Names& ids,
                                                 const std::string& moduleName) const {
    auto refused = tableOf(moduleName).storeAccepted(rows);
    if (!refused) return std::nullopt;
    return withoutRefused(ids, *refused, moduleName);
}

bool RecordInDatabase::storeRecord(const Record& record, const std::string& moduleName) {
    return tableOf(moduleName).store(rowsOf({record}, moduleName, namingInForce()));
}

/// The fields are read only for records that need them, and are not a condition for storing one.
std::vector<ValueMap> RecordInDatabase::rowsOf(const std::vector<Record>& records, const std::string& moduleName,
                                               const FieldIdentifier& naming) const {
    bool needFields = fieldLists_ && std::any_of(records.begin(), records.end(), hasEmptyList);
    auto fields = needFields ? fieldsForValues(moduleName) : std::nullopt;
    std::vector<ValueMap> rows;
    for (auto& record : records) rows.push_back(rowOf(record, naming, fields ? &*fields : nullptr));
    return rows;
}

bool RecordInDatabase::updateRecord(const Record& record, const std::string& recordID, const std::string& moduleName) {
    auto naming = namingInForce();
    auto table = tableOf(moduleName);
    auto row = rowsOf({record}, moduleName, naming).front();
    auto id = idColumn(moduleName, naming);
    // A column that is not the row's key takes the new id in any case.
    bool isKey = id == naming.constant->id;
    if (!databaseAdapter_ || record.recordId() == recordID || !isKey)
        return table.update(std::move(row), columnIs(id, recordID));

    // A row with the new id may exist already. It is deleted first, or the old row could never take that id.
    auto name = kelva::quotedName(table.tableName());
    auto isThere = Criteria::exists("SELECT 1 FROM " + name + " WHERE " + id + " = ?", {recordID});
    DeleteQuery deleteFormer(name, Criteria::and_({columnIs(id, record.recordId()), isThere}));
    UpdateQuery update(name, ValueMap());
    auto columns = table.columns();
    for (auto& entry : row)
        if (table.has(std::string(entry.name), columns))
            update.columnValues.set(kelva::quotedName(entry.name), entry.value);
    update.filter(columnIs(id, recordID));
    return databaseAdapter_->execute({deleteFormer, update});
}

bool RecordInDatabase::modifyRecord(const std::string& moduleName, const ValueMap& wireRecord) {
    return modifyRecord(moduleName, std::vector<ValueMap>{wireRecord});
}

bool RecordInDatabase::modifyRecord(const std::string& moduleName, const std::vector<ValueMap>& wireRecords) {
    auto fields = fieldsForValues(moduleName);
    if (!fields) return false;
    RecordConversion conversion(*fields);
    auto identifier = idColumn(moduleName, fields->naming());
    std::vector<ValueMap> rows;
    Names ids;
    for (auto& record : wireRecords) {
        rows.push_back(conversion.toRow(record));
        if (auto id = usableId(rows.back(), identifier)) ids.push_back(*id);
    }
    bool haveIds = true;
    auto modifyAll = [&] {
        return leaveOutUnchanged(rows, moduleName, fields->naming()) &&
               update(rows, moduleName, fields->naming(), haveIds);
    };
    bool isCommitted = databaseAdapter_ && databaseAdapter_->joinTransaction("modify records of " + moduleName, [&] {
        return UnsentChanges(databaseAdapter_, {olderQueue_, currentQueue_}, *fields).layOver(ids, modifyAll);
    });
    return isCommitted && haveIds;
}

/// Takes out of rows what the table holds already. The server answers an edit with the whole record, of which little
/// is new, and a statement over all columns costs several times as much as reading the row. What finds the row stays.
bool RecordInDatabase::leaveOutUnchanged(std::vector<ValueMap>& rows, const std::string& moduleName,
                                         const FieldIdentifier& naming) const {
    auto table = tableOf(moduleName);
    auto column = idColumn(moduleName, naming), key = std::string(naming.constant->id);
    for (auto& row : rows) {
        auto condition = conditionFor(row, moduleName, naming);
        if (!condition) continue;
        auto stored = table.fetch(FetchQuery(kelva::quotedName(table.tableName()), *condition));
        if (!stored) return false;
        if (stored->size() != 1) continue;
        ValueMap changed;
        for (auto& entry : row) {
            auto present = stored->front().find(entry.name);
            bool isChanged = !present || present->copy() != entry.value;
            if (isChanged || entry.name == column || entry.name == key) changed.set(entry.name, entry.value);
        }
        row = std::move(changed);
    }
    return true;
}

bool RecordInDatabase::modifyRecord(const std::string& moduleName, const Record& record) {
    return modifyRecord(moduleName, std::vector<Record>{record});
}

bool RecordInDatabase::modifyRecord(const std::string& moduleName, const std::vector<Record>& records) {
    auto naming = namingInForce();
    auto rows = rowsOf(records, moduleName, naming);
    // A column without a value was cleared.
    for (std::size_t i = 0; i < rows.size(); ++i)
        for (std::size_t column = 0; column < records[i].columnCount(); ++column)
            if (records[i].value(column).isNull()) rows[i].set(records[i].columnName(column), Value());
    return modify(rows, moduleName, naming);
}

bool RecordInDatabase::modify(const std::vector<ValueMap>& rows, const std::string& moduleName,
                              const FieldIdentifier& naming) const {
    bool haveIds = true;
    return databaseAdapter_ && databaseAdapter_->joinTransaction("modify records of " + moduleName, [&] {
        return update(rows, moduleName, naming, haveIds);
    }) && haveIds;
}

/// Returns false if the table refuses a row. One without an id does not cost the others.
bool RecordInDatabase::update(const std::vector<ValueMap>& rows, const std::string& moduleName,
                              const FieldIdentifier& naming, bool& haveIds) const {
    auto table = tableOf(moduleName);
    Names keys{idColumn(moduleName, naming), std::string(naming.constant->id)};
    for (auto& row : rows) {
        if (auto condition = conditionFor(row, moduleName, naming)) {
            if (!table.update(row, *condition, keys)) return false;
        } else {
            platform::log(platform::LogLevel::warning, "records", "INVALID RECORD. NO ID");
            haveIds = false;
        }
    }
    return true;
}

/// Rows go in as the page has them: a statement that reads a row first, to leave out what is equal, would cost more for
/// thousands of rows than it saves.
bool RecordInDatabase::modifyPage(const WireRecords& wireRecords, const std::string& moduleName) {
    auto fields = fieldsForValues(moduleName);
    if (!fields) return false;
    RecordPage page(wireRecords.document, wireRecords.list, *fields);
    logLeftOut(page.leftOut(), moduleName);
    DependentRecords dependents(databaseAdapter_, *fieldLists_, *fields,
                                [&](std::string_view wireName) { return nestedRecords(page, wireName); });
    auto ids = idsOf(page);
    auto modifyAll = [&] {
        return storeDependentsOfPresent(dependents, ids, *fields) && updateRows(EditedRecords(page), ids, *fields);
    };
    return databaseAdapter_ && databaseAdapter_->transaction("modify records of " + moduleName, [&] {
        return UnsentChanges(databaseAdapter_, {olderQueue_, currentQueue_}, *fields).layOver(ids, modifyAll);
    });
}

/// A record that the user has deleted here, or that was never here, leaves no rows without a parent.
bool RecordInDatabase::storeDependentsOfPresent(DependentRecords& dependents, const Names& ids,
                                                const FieldList& fields) const {
    if (dependents.isEmpty()) return true;
    auto present = idsPresent(ids, fields.moduleName(), fields.naming());
    if (!present) return false;
    dependents.keepOnly(*present);
    return dependents.store();
}

std::optional<std::unordered_set<std::string>> RecordInDatabase::presentIds(const Names& recordIds,
                                                                            const std::string& moduleName) {
    return idsPresent(recordIds, moduleName, namingInForce());
}

std::optional<std::unordered_set<std::string>> RecordInDatabase::idsPresent(const Names& recordIds,
                                                                            const std::string& moduleName,
                                                                            const FieldIdentifier& naming) const {
    auto table = tableOf(moduleName);
    auto column = idColumn(moduleName, naming);
    FetchQuery query(kelva::quotedName(table.tableName()), columnIn(column, recordIds));
    query.columns = {column};
    auto rows = table.fetch(query);
    if (!rows) return std::nullopt;
    std::unordered_set<std::string> present;
    for (auto row : *rows) present.emplace(row.cell(0).asText().value_or(""));
    return present;
}

bool RecordInDatabase::updateRows(const RowSource& rows, const Names& ids, const FieldList& fields) const {
    auto& naming = fields.naming();
    auto column = idColumn(fields.moduleName(), naming);
    auto refused = tableOf(fields.moduleName()).updateAccepted(rows, {column, std::string(naming.constant->id)});
    if (refused) withoutRefused(ids, *refused, fields.moduleName());
    return refused.has_value();
}

bool RecordInDatabase::hasUnsentEdits(const std::string& recordId, const FieldList& fields) const {
    auto columns = UnsentChanges(databaseAdapter_, {olderQueue_, currentQueue_}, fields).editedColumns(recordId);
    return !columns || !columns->empty();
}

// Reading

RecordInDatabase::Records RecordInDatabase::fetch(const FieldList& fields, std::optional<Criteria> criteria,
                                                  Selection selection) const {
    auto table = tableOf(fields.moduleName());
    FetchQuery query(kelva::quotedName(table.tableName()));
    auto columns = RecordQueries::getColumns(selection.columnsToFetch, fields, selection.unknownNames);
    query.columns = RecordQueries::selectList(columns, table);
    if (selection.columnsToFetch)
        for (auto& column : RecordQueries::defaultColumns(columns, fields, selection.sortColumns))
            query.columns.push_back(column);
    if (criteria) query.filter(*std::move(criteria));
    query.sortBy = std::move(selection.order);
    query.offset = selection.from;
    query.limit = selection.limit;
    auto rows = table.fetch(query);
    return rows ? Records(recordsOf(*rows, fields)) : std::nullopt;
}

std::vector<Record> RecordInDatabase::recordsOf(const Rows& rows, const FieldList& fields) {
    auto records = Record::fromRows(rows, fields.moduleName(), fields.naming());
    std::string_view attachments = fields.naming().constant->attachments;
    if (!rows.columns().find(attachments)) return records;
    for (auto& record : records)
        if (auto ids = attachmentIds(record[attachments], fields.moduleName()))
            record.set(attachments, *std::move(ids));
    return records;
}

Names RecordInDatabase::getColumnNameList(const std::optional<Names>& columns, const ModuleInfo& moduleInfo) {
    return RecordQueries::getColumns(columns, moduleInfo.metadata, RecordQueries::UnknownNames::keep);
}

RecordInDatabase::Records RecordInDatabase::fetchRecords(const std::string& moduleName,
                                                         const ValueMap& columnNamesAndValues,
                                                         const std::optional<Names>& columnsToFetch) {
    RecordQuery query;
    query.module.moduleName = moduleName;
    query.columnNamesAndValues = columnNamesAndValues;
    query.columnsToFetch = columnsToFetch;
    return fetchRecords(query);
}

std::optional<Record> RecordInDatabase::fetchRecordsFor(const std::string& moduleName, const std::string& recordID,
                                                        const Names& columnsToFetch) {
    return readByAnyId(*aliases_, moduleName, recordID, [&](const std::string& id) {
        return firstOf(fetchRecords(moduleName, Names{id}, columnsToFetch));
    });
}

std::optional<Record> RecordInDatabase::fetchRecord(const std::string& moduleName, const std::string& recordID) {
    // All columns of the row are read, so that the fields show only that the module has some.
    auto fields = fieldsForValues(moduleName, Names{idColumn(moduleName, namingInForce())});
    if (!fields) return std::nullopt;
    auto table = tableOf(moduleName);
    return readByAnyId(*aliases_, moduleName, recordID, [&](const std::string& id) -> std::optional<Record> {
        FetchQuery query(kelva::quotedName(table.tableName()), columnIs(idColumn(moduleName, fields->naming()), id));
        auto rows = table.fetch(query);
        return rows ? firstOf(Records(recordsOf(*rows, *fields))) : std::nullopt;
    });
}

RecordInDatabase::Records RecordInDatabase::fetchRecords(const std::string& moduleName, const Names& recordIds,
                                                         const std::optional<Names>& columnsToFetch) {
    auto fields = fieldsOf(moduleName);
    if (!fields) return std::nullopt;
    return fetch(*fields, columnIn(idColumn(moduleName, fields->naming()), recordIds),
                 {.columnsToFetch = columnsToFetch});
}

RecordInDatabase::Records RecordInDatabase::fetchRecords(const RecordQuery& query) {
    auto fields = fieldsOf(query.module.moduleName);
    if (!fields) return std::nullopt;
    Selection selection{.columnsToFetch = query.columnsToFetch, .from = query.from, .limit = query.limit};
    if (query.columnsToSortWith) {
        selection.order = RecordQueries::getSortDescriptors(*query.columnsToSortWith, *fields);
        selection.sortColumns = columnsOf(*query.columnsToSortWith);
    }
    return fetch(*fields, criteriaOf(query, *fields), std::move(selection));
}

RecordInDatabase::Records RecordInDatabase::getRecords(const ViewRecordQuery& query) {
    Selection selection{.columnsToFetch = query.columns,
                        .unknownNames = RecordQueries::UnknownNames::keep,
                        .from = query.from,
                        .limit = query.limit};
    if (query.sortBy) {
        selection.order = SortFieldToSortDescriptor::sortDescriptor(*query.sortBy, query.moduleInfo);
        selection.sortColumns = columnsOf(*query.sortBy);
    }
    return fetch(query.moduleInfo.metadata, criteriaOf(query), std::move(selection));
}

std::optional<std::int64_t> RecordInDatabase::countRecords(const RecordQuery& query) {
    auto fields = fieldsOf(query.module.moduleName);
    return fields ? count(criteriaOf(query, *fields), fields->moduleName()) : std::nullopt;
}

std::optional<std::int64_t> RecordInDatabase::countRecords(const ViewRecordQuery& query) {
    return count(criteriaOf(query), query.moduleInfo.moduleName());
}

std::optional<std::int64_t> RecordInDatabase::count(const std::optional<Criteria>& criteria,
                                                    const std::string& moduleName) const {
    auto table = kelva::quotedName(RecordUtil::getTableName(moduleName));
    return databaseAdapter_ ? databaseAdapter_->count(table, criteria) : std::nullopt;
}

// Deleting

bool RecordInDatabase::deleteRecord(const std::string& recordId, const std::string& moduleName) {
    return deleteRecords(moduleName, columnIs(idColumn(moduleName, namingInForce()), recordId));
}

bool RecordInDatabase::deleteRecords(const Names& recordIds, const std::string& moduleName) {
    return deleteRecords(moduleName, columnIn(idColumn(moduleName, namingInForce()), recordIds));
}

bool RecordInDatabase::deleteRecords(const std::string& moduleName, const Criteria& criteria) {
    return tableOf(moduleName).deleteObjects(criteria);
}

}  // namespace tarvo
