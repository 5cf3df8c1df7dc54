#include "tarvobase/record_changes/internal/RecordRefetch.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "platform/Log.h"
#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/record_changes/internal/EndedChanges.h"
#include "tarvobase/record_changes/internal/QueuedChange.h"
#include "tarvobase/record_changes/internal/RecordSides.h"
#include "tarvobase/records/RecordUtil.h"
#include "tarvobase/records/SharedActivities.h"
#include "tarvobase/records/sql/DeletedRecords.h"
#include "tarvobase/sync/AnswersBesideSync.h"
#include "tarvobase/transaction/ChangeNotices.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"

namespace tarvo {

std::shared_ptr<RecordRefetch> RecordRefetch::make(const Stores& stores,
                                                   std::shared_ptr<RecordPersistanceDelegate> records,
                                                   std::shared_ptr<RecordsSyncDataManagerProtocol> sync,
                                                   std::shared_ptr<FetchRecordNetworkServiceProtocol> service) {
    std::shared_ptr<RecordRefetch> refetch(
        new RecordRefetch(stores, std::move(records), std::move(sync), std::move(service)));
    refetch->service_->recordDelegate = refetch;
    return refetch;
}

void RecordRefetch::fetch(const std::string& moduleName, const std::string& recordId, Reason reason) const {
    if (reason == Reason::acceptance || reason == Reason::bareAcceptance) return sync(moduleName, reason);
    auto module = stores_.modules()->getModule(ModuleIdentifier::fromModuleName(moduleName));
    if (module) service_->fetchRecord({module.value(), recordId});
}

void RecordRefetch::sync(const std::string& moduleName, Reason reason) const {
    for (auto& module : SharedActivities::modulesOf(*stores_.databaseAdapter(), moduleName))
        if (reason == Reason::bareAcceptance || SyncRounds::shared().isUnderWay(stores_.scope, module))
            sync_->syncRecords(module);
}

void RecordRefetch::parsedRecords(const std::vector<ValueMap>& records, const RecordFetch& fetch) {
    auto& module = fetch.module.moduleName;
    if (!stores_.databaseAdapter()) return;
    if (records.empty()) return dropRefusedDeletes(module, fetch.recordID);
    for (auto& record : records) {
        if (record.valueOf(RecordConstants::FieldAPINames::Id).textOr("") != fetch.recordID) continue;
        bool isStored =
            stores_.databaseAdapter()->transaction("store a fetched record", [&] { return store(record, module); });
        if (!isStored) platform::log(platform::LogLevel::warning, "changes", "a fetched record could not be stored");
        AnswersBesideSync answers(stores_.scope, stores_.userDefaults);
        for (auto& each : SharedActivities::modulesOf(*stores_.databaseAdapter(), module))
            answers.stored(each, fetch.responseTime);
        return;
    }
}

bool RecordRefetch::store(const ValueMap& record, const std::string& moduleName) const {
    // Its own module comes last: tags belong to the module with which they were stored.
    auto modules = SharedActivities::modulesOf(*stores_.databaseAdapter(), moduleName);
    std::reverse(modules.begin(), modules.end());
    for (auto& module : modules) {
        auto row = record;
        bool isShared = module != moduleName;
        if (isShared) row.set(FieldAPIConstant.Activities.activityType, moduleName);
        // The shared table is written as far as its fields are known. A write that fails undoes all of it.
        if (!records_->storeRecord(row, module) && !isShared) return false;
    }
    return true;
}

/// The server does not have the record, which is what the user wanted.
void RecordRefetch::dropRefusedDeletes(const std::string& moduleName, const std::string& recordId) const {
    std::vector<Change> dropped;
    bool isStored = stores_.databaseAdapter()->transaction("drop a refused delete", [&] {
        auto queued = stores_.transactions()->getTransactions(recordId);
        if (!queued) return false;
        for (auto& row : queued->transactions) {
            bool isDelete = row.operationType == TransactionType::deleteRecord && row.moduleName == moduleName;
            if (!isDelete || !QueuedChange(row).hasFailed()) continue;
            auto entry = stores_.changeRegister()->enter(ChangeQueue::older, row.transactionID);
            if (!entry || !endOlderChanges(stores_, {row}, ChangeOutcome::accepted)) return false;
            dropped.push_back(Change::of(row, *entry));
        }
        return removeDeletedRecords(stores_.databaseAdapter(), *records_, moduleName, {recordId}) &&
               RecordSides::remove(stores_, recordId);
    });
    if (!isStored) return;
    for (auto& change : dropped) changeNotices::accepted(std::move(change), std::nullopt);
}

}  // namespace tarvo
