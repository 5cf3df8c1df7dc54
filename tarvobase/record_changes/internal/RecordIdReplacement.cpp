#include "tarvobase/record_changes/internal/RecordIdReplacement.h"

#include <algorithm>
#include <set>

#include "kelva_db/Database.h"
#include "platform/Text.h"
#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/record_changes/internal/QueuedChange.h"
#include "tarvobase/records/FilterRecordMapPersistanceDelegate.h"
#include "tarvobase/records/RecordUtil.h"
#include "tarvobase/records/SharedActivities.h"
#include "tarvobase/records/sql/DependentRecords.h"
#include "tarvobase/records/sql/UnsentChanges.h"
#include "tarvobase/storage/DatabasePersistanceClass.h"
#include "tarvobase/utils/ReplacedTexts.h"
#include "tarvobase/value_objects/tag/Tag.h"

namespace tarvo {

namespace {

/// Returns a column's text with the id replaced, where it is the text or one of several ids that "," joins. Returns
/// nullopt for a value that does not hold the id.
std::optional<std::string> withReplacedId(const Value& value, const std::string& formerId, const std::string& newId) {
    auto held = value.asText();
    if (!held || held->find(formerId) == std::string::npos) return std::nullopt;
    auto ids = text::split(*held, ",");
    std::replace(ids.begin(), ids.end(), formerId, newId);
    auto replaced = text::join(ids, ",");
    return replaced == *held ? std::nullopt : std::optional(std::move(replaced));
}

}  // namespace

RecordIdReplacement::RecordIdReplacement(const Stores& stores)
    : stores_(stores), fieldLists_(FieldListAssembler::getFieldListDM(stores.databaseAdapter())) {}

bool RecordIdReplacement::replace(const std::string& moduleName, const std::string& formerId,
                                  const std::string& newId) const {
    return stores_.databaseAdapter() && replaceRows(moduleName, formerId, newId) &&
           replaceInDependents(moduleName, formerId, newId) && replaceInQueue(formerId, newId) &&
           replaceInCurrentQueue(formerId, newId) && replaceInSides(formerId, formerId, newId) &&
           stores_.recordIdAliases()->store({formerId, moduleName, newId});
}

bool RecordIdReplacement::replaceRows(const std::string& moduleName, const std::string& formerId,
                                      const std::string& newId) const {
    for (auto& module : SharedActivities::modulesOf(*stores_.databaseAdapter(), moduleName))
        if (!replaceRow(module, formerId, newId)) return false;
    return true;
}

/// The local row takes the new id. If the server's row is there, the local row gives it what it lacks and what edits
/// that wait have set, and goes.
bool RecordIdReplacement::replaceRow(const std::string& moduleName, const std::string& formerId,
                                     const std::string& newId) const {
    auto& database = *stores_.databaseAdapter();
    auto table = kelva::quotedName(RecordUtil::getTableName(moduleName));
    std::string column(RecordUtil::getIdentifierFieldName(moduleName, stores_.scope.naming));
    auto rows = database.fetchObjects(FetchQuery(table, columnIs(column, newId)));
    auto former = database.fetchObjects(FetchQuery(table, columnIs(column, formerId)));
    if (!rows || !former) return false;
    if (former->empty()) return true;
    if (rows->empty()) return moveColumn(RecordUtil::getTableName(moduleName), column, formerId, newId);
    auto edited = editedColumns(moduleName, formerId);
    if (!edited) return false;
    ValueMap kept;
    for (auto& entry : former->front().toMap()) {
        bool isLacking = !entry.value.isNull() && rows->front().find(entry.name)->isNull();
        if (isLacking || edited->contains(std::string(entry.name)))
            kept.set(kelva::quotedName(entry.name), entry.value);
    }
    return (kept.empty() || database.update(table, kept, columnIs(column, newId))) &&
           database.deleteObjects(table, columnIs(column, formerId));
}

/// Without the fields of a module, no column can be told to be edited.
std::optional<std::set<std::string>> RecordIdReplacement::editedColumns(const std::string& moduleName,
                                                                        const std::string& recordId) const {
    auto fields = fieldLists_->getFields(moduleName, std::nullopt);
    if (!fields) return std::set<std::string>();
    UnsentChanges::Queues queues{stores_.transactions(), stores_.currentTransactions()};
    return UnsentChanges(stores_.databaseAdapter(), queues, fields.value()).editedColumns(recordId);
}

/// Rows that would collide with one of the new id give way: the server's are newer.
bool RecordIdReplacement::moveColumn(const std::string& table, std::string_view column, const std::string& formerId,
                                     const std::string& newId) const {
    auto& database = *stores_.databaseAdapter();
    if (database.columnNames(table).empty()) return true;
    auto name = kelva::quotedName(table), quoted = kelva::quotedName(column);
    UpdateQuery move(name, ValueMap{{quoted, newId}});
    move.ignoreOnError = true;
    move.filter(columnIs(quoted, formerId));
    DeleteQuery removeCollided(name, columnIs(quoted, formerId));
    return database.execute({move, removeCollided});
}

bool RecordIdReplacement::replaceInDependents(const std::string& moduleName, const std::string& formerId,
                                              const std::string& newId) const {
    constexpr CVRecordMapDatabaseConstants places;
    constexpr TagRecordDBMapper tags;
    for (auto& module : SharedActivities::modulesOf(*stores_.databaseAdapter(), moduleName))
        if (!moveColumn(module + std::string(places.tableNameSuffix), places.recordId, formerId, newId)) return false;
    if (!moveColumn(std::string(tags.tableName), tags.recordId, formerId, newId)) return false;
    auto fields = fieldLists_->getFields(moduleName, std::nullopt);
    if (!fields) return true;
    for (auto& table : DependentRecords::tablesWithParent(stores_.databaseAdapter(), fields.value()))
        if (!moveColumn(table, DependentRecords::parentColumn, formerId, newId)) return false;
    return true;
}

bool RecordIdReplacement::replaceInQueue(const std::string& formerId, const std::string& newId) const {
    auto queue = stores_.transactions()->getTransactions();
    if (!queue) return false;
    std::set<std::pair<std::string, std::string>> records;  // module and record, each once
    std::vector<Transaction> replaced;
    FreeText freeText(stores_);
    for (auto& row : queue->transactions) {
        auto changed = withReplacedId(row, formerId, newId, freeText);
        if (changed == row) continue;
        if (records.insert({changed.moduleName, changed.recordID}).second && !replaceInRecord(changed, formerId, newId))
            return false;
        replaced.push_back(std::move(changed));
    }
    return replaced.empty() || stores_.transactions()->storeTransactions(replaced);
}

/// The payloads of the current queue are its manager's; the records that they change are rewritten here. A queue with a
/// row that cannot be read must not hold up the answer.
bool RecordIdReplacement::replaceInCurrentQueue(const std::string& formerId, const std::string& newId) const {
    auto naming = stores_.currentTransactions()->getTransactionsNaming(formerId);
    if (!naming) return true;
    std::set<std::pair<std::string, std::string>> records;  // module and record, each once
    for (auto& transaction : *naming) records.insert({transaction.module.rawValue(), transaction.recordId});
    return std::all_of(records.begin(), records.end(), [&](auto& record) {
        bool hasTable = !stores_.databaseAdapter()->columnNames(RecordUtil::getTableName(record.first)).empty();
        return (!hasTable || replaceInRow(record.first, record.second, formerId, newId)) &&
               replaceInCurrentSides(record.second, formerId, newId);
    });
}

bool RecordIdReplacement::replaceInCurrentSides(const std::string& recordId, const std::string& formerId,
                                                const std::string& newId) const {
    auto store = stores_.currentTransactionRecords();
    auto found = store->getTransactionRecord(recordId);
    if (!found || !found.value()) return true;
    auto sides = *found.value();
    bool isNamed = replaceTexts(sides.deviceData, formerId, newId);
    isNamed = replaceTexts(sides.serverData, formerId, newId) || isNamed;
    return !isNamed || store->storeTransactionRecord(sides);
}

/// The record of a change that waits may look up the added one.
bool RecordIdReplacement::replaceInRecord(const Transaction& change, const std::string& formerId,
                                          const std::string& newId) const {
    for (auto& module : SharedActivities::modulesOf(*stores_.databaseAdapter(), change.moduleName))
        if (!replaceInRow(module, change.recordID, formerId, newId)) return false;
    return replaceInSides(change.recordID, formerId, newId);
}

bool RecordIdReplacement::replaceInRow(const std::string& moduleName, const std::string& recordId,
                                       const std::string& formerId, const std::string& newId) const {
    auto& database = *stores_.databaseAdapter();
    auto table = kelva::quotedName(RecordUtil::getTableName(moduleName));
    auto isRecord =
        columnIs(std::string(RecordUtil::getIdentifierFieldName(moduleName, stores_.scope.naming)), recordId);
    auto rows = database.fetchObjects(FetchQuery(table, isRecord));
    if (!rows) return false;
    ValueMap lookups;
    FreeText freeText(stores_);
    if (!rows->empty())
        for (auto& entry : rows->front().toMap())
            if (auto replaced = withReplacedId(entry.value, formerId, newId);
                replaced && !freeText.holdsColumn(moduleName, entry.name))
                lookups.set(kelva::quotedName(entry.name), *std::move(replaced));
    return lookups.empty() || database.update(table, lookups, isRecord);
}

bool RecordIdReplacement::replaceInSides(const std::string& recordId, const std::string& formerId,
                                         const std::string& newId) const {
    auto store = stores_.transactionRecords();
    auto found = store->getTransactionRecord(recordId);
    // Sides that cannot be read show nobody anything, and must not hold up the answer.
    if (!found || !found.value()) return true;
    auto sides = *found.value();
    bool isOwn = sides.recordID == formerId;
    bool isNamed = replaceTexts(sides.deviceData, formerId, newId);
    isNamed = replaceTexts(sides.serverData, formerId, newId) || isNamed;
    if (!isOwn && !isNamed) return true;
    if (isOwn) sides.recordID = newId;
    return (!isOwn || store->removeTransactionRecord(formerId)) && store->storeTransactionRecordPersistance(sides);
}

}  // namespace tarvo
