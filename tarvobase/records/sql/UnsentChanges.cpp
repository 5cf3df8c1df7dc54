#include "tarvobase/records/sql/UnsentChanges.h"

#include <algorithm>

#include "kelva_db/Database.h"
#include "platform/Json.h"
#include "tarvobase/records/RecordUtil.h"
#include "tarvobase/records/SharedActivities.h"
#include "tarvobase/storage/DatabasePersistanceClass.h"

namespace tarvo {

UnsentChanges::UnsentChanges(const std::shared_ptr<DatabaseAdapter>& databaseAdapter,
                             TransactionPersistanceDelegate& queue, const FieldList& fields)
    : databaseAdapter_(databaseAdapter),
      queue_(queue),
      fields_(fields),
      table_(kelva::quotedName(RecordUtil::getTableName(fields.moduleName()))),
      idColumn_(RecordUtil::getIdentifierFieldName(fields.moduleName(), fields.naming())) {}

bool UnsentChanges::layOver(const std::vector<std::string>& recordIds, platform::FunctionRef<bool()> store) const {
    Changes changes;
    if (!readChanges(recordIds, changes) || !store()) return false;
    for (auto& edit : changes.edits)
        if (!edit.values.empty() && !databaseAdapter_->update(table_, edit.values, columnIs(idColumn_, edit.recordId)))
            return false;
    return changes.deletedIds.empty() ||
           databaseAdapter_->deleteObjects(table_, columnIn(idColumn_, changes.deletedIds));
}

bool UnsentChanges::readChanges(const std::vector<std::string>& recordIds, Changes& changes) const {
    auto queued = queue_.getTransactionsOfRecords(recordIds);
    if (!queued) return false;
    auto modules = SharedActivities::modulesIn(fields_.moduleName());
    for (auto& change : queued->transactions)
        if (std::find(modules.begin(), modules.end(), change.moduleName) != modules.end()) addChange(change, changes);
    return std::all_of(changes.edits.begin(), changes.edits.end(), [&](auto& edit) { return readValues(edit); });
}

/// A record whose delete the server has refused is shown again, so that only deletes that still wait count.
void UnsentChanges::addChange(const Transaction& change, Changes& changes) const {
    bool waits = !change.extras || *change.extras == Transaction::State::inProgress;
    if (change.operationType == TransactionType::deleteRecord && waits) changes.deletedIds.push_back(change.recordID);
    if (change.operationType != TransactionType::editRecord) return;
    auto isSame = [&](auto& edit) { return edit.recordId == change.recordID; };
    auto edit = std::find_if(changes.edits.begin(), changes.edits.end(), isSame);
    if (edit == changes.edits.end()) edit = changes.edits.insert(edit, {change.recordID, {}, {}});
    addColumns(change, edit->columns);
}

std::optional<std::set<std::string>> UnsentChanges::editedColumns(const std::string& recordId) const {
    auto queued = queue_.getTransactions(recordId);
    if (!queued) return std::nullopt;
    std::set<std::string> columns;
    for (auto& change : queued->transactions)
        if (change.operationType == TransactionType::editRecord) addColumns(change, columns);
    return columns;
}

/// Adds the columns that an edit sets, with those that hold the display texts of lookups.
void UnsentChanges::addColumns(const Transaction& change, std::set<std::string>& columns) const {
    auto body = change.dataJSON ? json::parse(*change.dataJSON) : std::nullopt;
    auto data = body && body->asMap() ? body->asMap()->find("data") : nullptr;
    if (!data || !data->asList()) return;
    for (auto& payload : *data->asList()) {
        if (!payload.asMap()) continue;
        for (auto& entry : *payload.asMap()) {
            auto field = fields_.getFieldByApiName(std::string(entry.name));
            auto column = field ? fields_.identifierOf(*field) : std::string();
            if (column.empty() || column == idColumn_) continue;
            for (auto suffix : {std::string_view(), lookupSuffix, firstNameSuffix, lastNameSuffix})
                columns.insert(column + std::string(suffix));
        }
    }
}

/// Reads what the columns hold now. A record without a row here has nothing to keep.
bool UnsentChanges::readValues(Edit& edit) const {
    auto rows = databaseAdapter_->fetchObjects(FetchQuery(table_, columnIs(idColumn_, edit.recordId)));
    if (!rows) return false;
    if (rows->empty()) return true;
    for (auto& column : edit.columns)
        if (auto value = rows->front().find(column)) edit.values.set(kelva::quotedName(column), value->copy());
    return true;
}

}  // namespace tarvo
