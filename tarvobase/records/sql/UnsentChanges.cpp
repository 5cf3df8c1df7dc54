#include "tarvobase/records/sql/UnsentChanges.h"

#include <algorithm>
#include <utility>

#include "kelva_db/Database.h"
#include "platform/Json.h"
#include "platform/Text.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/records/RecordUtil.h"
#include "tarvobase/records/SharedActivities.h"
#include "tarvobase/storage/DatabasePersistanceClass.h"

namespace tarvo {

namespace {

const std::vector<NTransaction::Kind>& editsAndDeletes() {
    static const auto kinds = kindsWhere([](NTransaction::Kind kind) {
        return depndencyType(kind) == RecordDependency::Kind::edit ||
               depndencyType(kind) == RecordDependency::Kind::delete_;
    });
    return kinds;
}

/// Returns the payloads in the body of a change of the older queue.
std::vector<ValueMap> payloadsOf(const Transaction& change) {
    auto body = change.dataJSON ? json::parse(*change.dataJSON) : std::nullopt;
    auto data = body && body->asMap() ? body->asMap()->find("data") : nullptr;
    std::vector<ValueMap> payloads;
    if (!data || !data->asList()) return payloads;
    for (auto& payload : *data->asList())
        if (payload.asMap()) payloads.push_back(*payload.asMap());
    return payloads;
}

}  // namespace

UnsentChanges::UnsentChanges(const std::shared_ptr<DatabaseAdapter>& databaseAdapter, Queues queues,
                             const FieldList& fields)
    : databaseAdapter_(databaseAdapter),
      queues_(std::move(queues)),
      fields_(fields),
      table_(kelva::quotedName(RecordUtil::getTableName(fields.moduleName()))),
      idColumn_(RecordUtil::getIdentifierFieldName(fields.moduleName(), fields.naming())) {}

bool UnsentChanges::layOver(const std::vector<std::string>& recordIds, platform::FunctionRef<bool()> store) const {
    auto changes = readChanges(recordIds);
    auto edits = changes ? readEdits(*changes) : std::nullopt;
    if (!edits || !store()) return false;
    for (auto& edit : *edits)
        if (!databaseAdapter_->update(table_, edit.values, columnIs(idColumn_, edit.recordId))) return false;
    std::vector<std::string> deletedIds(changes->deletedIds.begin(), changes->deletedIds.end());
    return deletedIds.empty() || databaseAdapter_->deleteObjects(table_, columnIn(idColumn_, deletedIds));
}

std::optional<std::set<std::string>> UnsentChanges::editedColumns(const std::string& recordId) const {
    auto changes = readChanges({recordId});
    if (!changes) return std::nullopt;
    return std::move(changes->columns[recordId]);
}

std::optional<std::set<std::string>> UnsentChanges::recordsWithSentChanges(const Stores& stores) {
    auto entries = stores.changeRegister()->entries();
    if (!entries) return std::nullopt;
    std::vector<std::string> olderIds;
    std::vector<std::int64_t> currentIds;
    for (auto& entry : *entries) {
        if (!entry.mayHaveArrived()) continue;
        if (entry.queue == ChangeQueue::older)
            olderIds.push_back(entry.transactionId);
        else if (auto id = text::toInteger(entry.transactionId))
            currentIds.push_back(*id);
    }
    std::set<std::string> recordIds;
    if (!olderIds.empty()) {
        auto older = stores.transactions()->getTransactionsWithIds(olderIds);
        if (!older) return std::nullopt;
        for (auto& change : older->transactions)
            if (change.operationType != TransactionType::deleteRecord) recordIds.insert(change.recordID);
    }
    if (!currentIds.empty()) {
        auto current = stores.currentTransactions()->getTransactionsWithIds(currentIds);
        if (!current) return std::nullopt;
        for (auto& change : *current)
            if (depndencyType(change.kind) != RecordDependency::Kind::delete_) recordIds.insert(change.recordId);
    }
    return recordIds;
}

std::optional<UnsentChanges::Changes> UnsentChanges::readChanges(const std::vector<std::string>& recordIds) const {
    auto older = queues_.older->getTransactionsOfRecords(recordIds);
    auto current = queues_.current->getTransactionsOfRecords(recordIds, editsAndDeletes());
    if (!older || !current) return std::nullopt;
    Changes changes;
    auto modules = SharedActivities::modulesIn(fields_.moduleName());
    auto isShown = [&](const std::string& module) {
        return std::find(modules.begin(), modules.end(), module) != modules.end();
    };
    for (auto& change : older->transactions)
        if (isShown(change.moduleName)) addChange(change, changes);
    for (auto& change : current->transactions)
        if (isShown(change.module.rawValue())) addChange(change, changes);
    return changes;
}

/// A record whose delete the server has refused is shown again, so that only deletes that still wait count.
void UnsentChanges::addChange(const Transaction& change, Changes& changes) const {
    bool waits = !change.extras || *change.extras == Transaction::State::inProgress;
    if (change.operationType == TransactionType::deleteRecord && waits) changes.deletedIds.insert(change.recordID);
    if (change.operationType != TransactionType::editRecord) return;
    auto& columns = changes.columns[change.recordID];
    for (auto& payload : payloadsOf(change)) addColumns(payload, columns);
}

/// A delete without a readable answer still waits: the server may have applied it.
void UnsentChanges::addChange(const NTransaction& change, Changes& changes) const {
    bool waits = !change.errorResponse || change.errorResponse->code == ErrorResponse::parsingFailed().code;
    auto type = depndencyType(change.kind);
    if (type == RecordDependency::Kind::delete_ && waits) changes.deletedIds.insert(change.recordId);
    if (type == RecordDependency::Kind::edit) addColumns(change.payload, changes.columns[change.recordId]);
}

/// Adds the columns that an edit sets, with those that hold the display texts of lookups.
void UnsentChanges::addColumns(const ValueMap& payload, std::set<std::string>& columns) const {
    for (auto& entry : payload) {
        auto field = fields_.getFieldByApiName(std::string(entry.name));
        auto column = field ? fields_.identifierOf(*field) : std::string();
        if (column.empty() || column == idColumn_) continue;
        for (auto suffix : {std::string_view(), lookupSuffix, firstNameSuffix, lastNameSuffix})
            columns.insert(column + std::string(suffix));
    }
}

/// Reads what the edited columns hold now. A record without a row here has nothing to keep.
std::optional<std::vector<UnsentChanges::Edit>> UnsentChanges::readEdits(const Changes& changes) const {
    std::vector<Edit> edits;
    std::vector<std::string> edited;
    for (auto& each : changes.columns) edited.push_back(each.first);
    if (edited.empty()) return edits;
    auto rows = databaseAdapter_->fetchObjects(FetchQuery(table_, columnIn(idColumn_, edited)));
    if (!rows) return std::nullopt;
    for (auto row : *rows) {
        auto columns = changes.columns.find(row.valueOf(idColumn_).toText().value_or(""));
        if (columns == changes.columns.end()) continue;
        Edit edit{columns->first, {}};
        for (auto& column : columns->second)
            if (auto value = row.find(column)) edit.values.set(kelva::quotedName(column), value->copy());
        if (!edit.values.empty()) edits.push_back(std::move(edit));
    }
    return edits;
}

}  // namespace tarvo
