#include "tarvobase/change_queues/RecordReversion.h"

#include <algorithm>
#include <map>

#include "platform/Json.h"
#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/database_layer/TransactionEnd.h"
#include "tarvobase/metadata/GetFieldListDM.h"
#include "tarvobase/notification/BrenNotificationCenter.h"
#include "tarvobase/notification/RecordChangedObserver.h"
#include "tarvobase/record_changes/internal/ChangePayload.h"
#include "tarvobase/record_changes/internal/RecordSides.h"
#include "tarvobase/records/SharedActivities.h"
#include "tarvobase/records/sql/DeletedRecords.h"
#include "tarvobase/utils/TemporaryIds.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"

namespace tarvo {

namespace {

void notifyOfRecord(std::function<void(RecordChangedObserver&)> callback) {
    afterCommit([callback = std::move(callback)] {
        BrenNotificationCenter::shared().notify<RecordChangedObserver>(true, callback);
    });
}

bool namesAny(const Value& value, const std::set<std::string>& ids) {
    auto text = json::write(value).value_or("");
    return std::any_of(ids.begin(), ids.end(), [&](auto& id) { return text.find(id) != std::string::npos; });
}

std::int64_t modifiedTimeOf(const Record& record, const Stores& stores) {
    return record[stores.scope.naming.constant->modifiedTime].asInteger().value_or(0);
}

}  // namespace

bool RecordReversion::removeAdded(const SelectedChange& add) const {
    // Some kinds have no record on the screen.
    if (stores_.databaseAdapter()->columnNames(RecordUtil::getTableName(add.moduleName())).empty()) return true;
    if (!removeDeletedRecords(stores_.databaseAdapter(), *records_, add.moduleName(), {add.recordId()}) ||
        !RecordSides::remove(stores_, add.recordId()))
        return false;
    notifyOfRecord(
        [module = add.moduleName(), id = add.recordId()](auto& observer) { observer.recordDeleted(module, {id}); });
    return true;
}

bool RecordReversion::revertEdits(const std::string& moduleName, const std::string& recordId,
                                  const std::vector<const SelectedChange*>& edits, bool revert,
                                  const std::set<std::string>& goneIds) {
    auto row = records_->fetchRecord(moduleName, recordId);
    auto fields = FieldListAssembler::getFieldListDM(stores_.databaseAdapter())
                      ->getFieldsWithoutPicklists(moduleName, std::nullopt);
    // Nothing of it is on the screen.
    if (!row || !fields) return true;
    std::set<std::string> names;
    for (auto edit : edits)
        if (auto payload = edit->payload())
            for (auto& entry : *payload)
                if (revert || namesAny(entry.value, goneIds)) names.insert(std::string(entry.name));
    if (names.empty()) return true;
    bool isRead = false;
    auto former = formerValues(moduleName, recordId, fields.value(), isRead);
    if (!isRead) return false;
    fetchLater(moduleName, recordId);
    if (!former) return true;
    ValueMap changed;
    for (auto& name : names) {
        auto columns = RecordSides::columnsOf(name, fields.value());
        // The texts that are shown for a value stay as long as it does.
        if (columns.empty() || !row->hasColumn(columns.front()) ||
            row->valueOf(columns.front()) == former->valueOf(columns.front()))
            continue;
        for (auto& column : columns)
            if (row->hasColumn(column)) changed.set(column, former->valueOf(column));
    }
    return changed.empty() || write(moduleName, *row, std::move(changed));
}

/// Returns the payloads that both queues have of a record, in the order in which the changes were made, the add first.
std::optional<std::vector<RecordReversion::Layer>> RecordReversion::layersOf(
    const std::string& moduleName, const std::vector<Transaction>& older,
    const std::vector<NTransaction>& current) const {
    std::vector<std::string> olderIds, currentIds;
    for (auto& row : older) olderIds.push_back(row.transactionID);
    for (auto& row : current) currentIds.push_back(std::to_string(row.id));
    auto olderEntries = stores_.changeRegister()->entriesOf(ChangeQueue::older, olderIds);
    auto currentEntries = stores_.changeRegister()->entriesOf(ChangeQueue::current, currentIds);
    if (!olderEntries || !currentEntries) return std::nullopt;
    std::map<std::string, std::int64_t> numbers;
    for (auto entries : {&*olderEntries, &*currentEntries})
        for (auto& entry : *entries) numbers[entry.transactionId] = entry.number;
    std::vector<Layer> layers;
    for (auto& row : older) {
        bool isAdd = row.operationType == TransactionType::addRecord;
        bool isTheirs = row.moduleName == moduleName && (isAdd || row.operationType == TransactionType::editRecord);
        if (auto payload = isTheirs ? ChangePayload::of(row) : std::nullopt)
            layers.push_back({isAdd, numbers[row.transactionID], *std::move(payload)});
    }
    for (auto& row : current)
        if (createsRecord(row.kind) || depndencyType(row.kind) == RecordDependency::Kind::edit)
            layers.push_back({createsRecord(row.kind), numbers[std::to_string(row.id)], row.payload});
    std::stable_sort(layers.begin(), layers.end(),
                     [](auto& a, auto& b) { return std::pair(!a.isAdd, a.number) < std::pair(!b.isAdd, b.number); });
    return layers;
}

/// Returns what the server has of a record, or the values of its add, with the edits over it that are still queued.
/// Returns nullopt if neither is known. `isRead` says whether the queues could be read.
std::optional<ValueMap> RecordReversion::formerValues(const std::string& moduleName, const std::string& recordId,
                                                      const FieldList& fields, bool& isRead) const {
    auto older = stores_.transactions()->getTransactions(recordId);
    auto current = currentOf(recordId);
    isRead = older && current;
    if (!isRead) return std::nullopt;
    std::optional<ValueMap> former;
    auto sides = stores_.transactionRecords()->getTransactionRecord(recordId);
    auto currentSides = stores_.currentTransactionRecords()->getTransactionRecord(recordId);
    if (sides && sides.value())
        former = sides.value()->serverData;
    else if (currentSides && currentSides.value())
        former = currentSides.value()->serverData;
    auto layers = layersOf(moduleName, older->transactions, current->transactions);
    if (!layers) {
        isRead = false;
        return std::nullopt;
    }
    for (auto& layer : *layers) {
        if (layer.isAdd && former) continue;
        if (layer.isAdd) former.emplace();
        if (former) RecordSides::layOver(*former, layer.payload, fields);
    }
    return former;
}

/// A row that cannot be read is never sent, and hinders nothing.
std::optional<QueuedNTransactions> RecordReversion::currentOf(const std::string& recordId) const {
    return stores_.currentTransactions()->getTransactionsOfRecords({recordId}, kindsWhere([](auto) { return true; }));
}

bool RecordReversion::write(const std::string& moduleName, const Record& record, ValueMap changed) const {
    auto modified = modifiedTimeOf(record, stores_);
    Record values(std::move(changed), record.recordId(), moduleName, stores_.scope.naming);
    for (auto& module : SharedActivities::modulesOf(*stores_.databaseAdapter(), moduleName))
        // The shared table is written as far as its fields are known.
        if (!records_->modifyRecord(module, values) && module == moduleName) return false;
    notifyOfRecord([moduleName, id = record.recordId(), modified](auto& observer) {
        observer.recordUpdated(moduleName, RecordChangedObserver::RecordIds{{id, modified}});
    });
    return true;
}

/// The record of an add that still waits for its answer has the values of the add. Edits went with the delete.
bool RecordReversion::layAddOver(ValueMap& values, const std::string& moduleName, const std::string& recordId) const {
    if (!isTemporaryRecordId(recordId)) return true;
    auto older = stores_.transactions()->getTransactions(recordId);
    auto current = currentOf(recordId);
    auto fields = FieldListAssembler::getFieldListDM(stores_.databaseAdapter())
                      ->getFieldsWithoutPicklists(moduleName, std::nullopt);
    if (!older || !current || !fields) return false;
    for (auto& row : older->transactions) {
        bool isAdd = row.moduleName == moduleName && row.operationType == TransactionType::addRecord;
        if (auto payload = isAdd ? ChangePayload::of(row) : std::nullopt)
            RecordSides::layOver(values, *payload, fields.value());
    }
    for (auto& row : current->transactions)
        if (createsRecord(row.kind)) RecordSides::layOver(values, row.payload, fields.value());
    return true;
}

/// The server knows no record by a temporary id.
void RecordReversion::fetchLater(const std::string& moduleName, const std::string& recordId) {
    if (!isTemporaryRecordId(recordId)) outdated_.insert({moduleName, recordId});
}

bool RecordReversion::restore(const SelectedChange& deletion) {
    auto& moduleName = deletion.moduleName();
    auto& recordId = deletion.recordId();
    auto sides = stores_.transactionRecords()->getTransactionRecord(recordId);
    // The server has refused the delete, and the record is back.
    if (records_->fetchRecord(moduleName, recordId)) return true;
    fetchLater(moduleName, recordId);
    if (!sides || !sides.value() || sides.value()->serverData.empty()) return true;
    auto values = sides.value()->serverData;
    if (!layAddOver(values, moduleName, recordId)) return false;
    Record record(std::move(values), recordId, moduleName, stores_.scope.naming);
    for (auto& module : SharedActivities::modulesOf(*stores_.databaseAdapter(), moduleName)) {
        auto row = record;
        bool isShared = module != moduleName;
        if (isShared) row.set(stores_.scope.naming.constant->Activities.activityType, moduleName);
        if (!records_->storeRecord(row, module) && !isShared) return false;
    }
    notifyOfRecord([moduleName, recordId, modified = modifiedTimeOf(record, stores_)](auto& observer) {
        observer.recordAdded(moduleName, {{recordId, modified}});
    });
    return true;
}

bool RecordReversion::tidy(const std::string& recordId) const {
    auto older = stores_.transactions()->getTransactions(recordId);
    auto current = currentOf(recordId);
    if (!older || !current) return false;
    return (!older->transactions.empty() || stores_.transactionRecords()->removeTransactionRecord(recordId)) &&
           (!current->transactions.empty() || stores_.currentTransactionRecords()->removeTransactionRecord(recordId));
}

}  // namespace tarvo
