#include "tarvobase/record_changes/RecordChanges.h"

#include <algorithm>
#include <tuple>
#include <vector>

#include "platform/Files.h"
#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/database_layer/TransactionEnd.h"
#include "tarvobase/metadata/GetFieldListDM.h"
#include "tarvobase/record_changes/internal/AliasedLookups.h"
#include "tarvobase/record_changes/internal/DependentFailures.h"
#include "tarvobase/record_changes/internal/EndedChanges.h"
#include "tarvobase/records/RecordUtil.h"
#include "tarvobase/records/SharedActivities.h"
#include "tarvobase/transaction/ChangeNotices.h"
#include "tarvobase/transaction/TransactionWaiters.h"
#include "tarvobase/utils/TemporaryIds.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"

namespace tarvo {

namespace {

using Queued = RecordTransactionManagerProtocol::Queued;

SavedChange notSaved(const std::string& recordId, const Module& module, ChangeNotSaved reason) {
    changeNotices::notSaved(module.moduleName, recordId, reason);
    return reason;
}

/// Runs the steps of a change of a record as one transaction, and notifies if nothing of it is stored. The steps return
/// the queued change, or nullopt if one of them is not stored. `recordId` is a copy, since the steps may change the
/// record's.
template <class Steps>
SavedChange savedAtOnce(const RecordChangeParts& parts, std::string recordId, const Module& module,
                        std::string_view name, const Steps& steps) {
    if (recordId.empty()) return notSaved(recordId, module, ChangeNotSaved::noRecordId);
    Queued queued;
    auto& database = parts.stores.databaseAdapter();
    bool isCommitted = database && database->transaction(name, [&] {
        FieldListMemory memory;
        queued = steps();
        return queued.has_value();
    });
    if (!isCommitted) return notSaved(recordId, module, ChangeNotSaved::notStored);
    return *std::move(queued);
}

}  // namespace

SavedChange AddRecordDataManager::addRecord(Record record, const Module& module) const {
    auto& stores = parts_.stores;
    return savedAtOnce(parts_, record.recordId(), module, "add a record", [&]() -> Queued {
        if (!stores.recordIdAliases()->forget(module.moduleName, record.recordId())) return std::nullopt;
        if (!replaceAliases(stores, record)) return std::nullopt;
        for (auto& each : SharedActivities::modulesOf(*stores.databaseAdapter(), module.moduleName)) {
            auto row = record;
            // The shared table tells its kinds apart by this column.
            if (each != module.moduleName)
                row.set(stores.scope.naming.constant->Activities.activityType, module.moduleName);
            if (!parts_.recordPersistance->storeRecord(row, each)) return std::nullopt;
        }
        return parts_.editRecordTransactionManager->addRecord(record, module);
    });
}

SavedChange EditRecordDataManager::editRecord(Record record, const Module& module) const {
    auto& stores = parts_.stores;
    return savedAtOnce(parts_, record.recordId(), module, "edit a record", [&]() -> Queued {
        record.setRecordId(
            SharedActivities::currentId(*stores.recordIdAliases(), module.moduleName, record.recordId()));
        // The first of several reads gets all that the others need.
        std::ignore = FieldListAssembler::getFieldListDM(stores.databaseAdapter())
                          ->getFieldsWithoutPicklists(module.moduleName, record.columnNames());
        if (!replaceAliases(stores, record) || !storeInTransactionRecords(record, module)) return std::nullopt;
        for (auto& each : SharedActivities::modulesOf(*stores.databaseAdapter(), module.moduleName))
            if (!parts_.recordPersistance->modifyRecord(each, record)) return std::nullopt;
        return parts_.editRecordTransactionManager->editRecord(record, module);
    });
}

/// Keeps the record as it was before its first edit that waits. A record that exists here alone has no such side.
bool EditRecordDataManager::storeInTransactionRecords(const Record& record, const Module& module) const {
    if (isTempId(record.recordId())) return true;
    auto sides = parts_.stores.transactionRecords();
    auto isKept = sides->hasTransactionRecord(record.recordId());
    if (!isKept) return false;
    if (*isKept) return sides->updateDeviceData(record.recordId(), record.getDictionary());
    auto stored = parts_.recordPersistance->fetchRecord(module.moduleName, record.recordId());
    return !stored || sides->storeTransactionRecordPersistance({.recordID = record.recordId(),
                                                                .deviceData = record.getDictionary(),
                                                                .serverData = stored->getDictionary()});
}

SavedChange DeleteRecordDataManager::deleteRecord(std::string recordID, const Module& module) const {
    auto& stores = parts_.stores;
    std::vector<std::string> files;
    bool isNote = module.identifier() == ModuleIdentifier::Case::notes, isSoundNeeded = false;
    auto saved = savedAtOnce(parts_, recordID, module, "delete a record", [&]() -> Queued {
        recordID = SharedActivities::currentId(*stores.recordIdAliases(), module.moduleName, recordID);
        if (!keepInTransactionRecords(recordID, module)) return std::nullopt;
        for (auto& each : SharedActivities::modulesOf(*stores.databaseAdapter(), module.moduleName))
            if (!parts_.recordPersistance->deleteRecord(recordID, each)) return std::nullopt;
        if (!dropQueued(recordID, module.moduleName)) return std::nullopt;
        if (isNote && !dropQueuedNote(recordID, isSoundNeeded)) return std::nullopt;
        auto queued = parts_.editRecordTransactionManager->deleteRecord(recordID, module);
        return queued && deleteAttachments(recordID, module, files) ? queued : std::nullopt;
    });
    if (!saved) return saved;
    auto voiceFile = files::pathComponent(recordID + ".wav");
    if (isNote && !isSoundNeeded && voiceFile && !parts_.voiceFileDirectory.empty())
        files.push_back(parts_.voiceFileDirectory + *voiceFile);
    for (auto& path : files) files::remove(path);
    return saved;
}

/// Keeps the values that the server has of a deleted record, for a delete that is cancelled. They go with the delete.
/// Edits of a note, whose own sides have those values, go with it as well.
bool DeleteRecordDataManager::keepInTransactionRecords(const std::string& recordId, const Module& module) const {
    auto sides = parts_.stores.transactionRecords();
    auto found = sides->getTransactionRecord(recordId);
    if (found && found.value()) return true;
    auto stored = parts_.recordPersistance->fetchRecord(module.moduleName, recordId);
    if (!stored) return sides->removeTransactionRecord(recordId);
    auto ofNote = parts_.stores.currentTransactionRecords()->getTransactionRecord(recordId);
    auto values = ofNote && ofNote.value() ? ofNote.value()->serverData : stored->getDictionary();
    return sides->storeTransactionRecordPersistance({.recordID = recordId, .deviceData = values, .serverData = values});
}

/// Drops the changes of a record that is deleted. An add that was sent may have made the record at the server: the
/// delete waits for its answer.
bool DeleteRecordDataManager::dropQueued(const std::string& recordId, const std::string& moduleName) const {
    auto queued = parts_.stores.transactions()->getTransactions(recordId);
    if (!queued) return false;
    for (auto& row : queued->transactions) {
        if (row.moduleName != moduleName) continue;
        auto entries = parts_.stores.changeRegister()->entriesOf(ChangeQueue::older, {row.transactionID});
        if (!entries) return false;
        bool isEntered = !entries->empty();
        bool mayBeApplied = isEntered && entries->front().mayHaveArrived();
        if (row.operationType == TransactionType::addRecord && mayBeApplied) {
            if (entries->front().lastRefusal && !repeatAdd(entries->front(), recordId)) return false;
            continue;
        }
        if (!drop(row, isEntered ? entries->front() : ChangeEntry())) return false;
    }
    return true;
}

/// A change that is gone is settled: observers that count what waits would wait for it for ever. What waits for an add
/// would never learn of an id.
bool DeleteRecordDataManager::drop(const Transaction& row, const ChangeEntry& entry) const {
    bool hasFailed = row.extras == Transaction::State::error;
    if (entry.number)
        afterCommit([change = Change::of(row, entry), hasFailed] {
            hasFailed ? changeNotices::cancelled(change) : changeNotices::accepted(change, std::nullopt);
        });
    if (entry.transactionNumber &&
        !TransactionWaiters(parts_.stores).fail(entry.transactionNumber, ErrorResponse::dependingTransactionFailed()))
        return false;
    return endOlderChanges(parts_.stores, {row}, hasFailed ? ChangeOutcome::cancelled : ChangeOutcome::accepted);
}

/// Takes the transactions of a deleted note out of the current queue, but not an add that the server may have applied:
/// one that has failed goes once more, since the delete waits for the id. An edit goes even if it was sent: repeated
/// after the delete, it would be refused for ever. What waits for the note will never get its id: it fails before the
/// transaction goes, which would set it free. Sets `isSoundNeeded` if an upload stays, which may have to be repeated.
bool DeleteRecordDataManager::dropQueuedNote(const std::string& recordId, bool& isSoundNeeded) const {
    auto& manager = parts_.transactionManager;
    if (!manager) return true;
    auto queued = parts_.stores.currentTransactions()->getTransactionsOfRecords({recordId},
                                                                                kindsWhere([](auto) { return true; }));
    if (!queued) return false;
    // What cannot be read is never sent.
    for (auto& row : queued->unreadable)
        if (!manager->deleteTransactionWithId(row.id)) return false;
    auto& transactions = queued->transactions;
    for (auto transaction = transactions.rbegin(); transaction != transactions.rend(); ++transaction) {
        auto entries =
            parts_.stores.changeRegister()->entriesOf(ChangeQueue::current, {std::to_string(transaction->id)});
        auto waiting = parts_.stores.transactionDependencies()->getTransactionDependencies(
            {transaction->id}, {TransactionDependency::Kind::lookupRecord});
        if (!entries || !waiting) return false;
        auto entry = entries->empty() ? ChangeEntry() : entries->front();
        if (createsRecord(transaction->kind) && entry.mayHaveArrived()) {
            isSoundNeeded |= transaction->kind == NTransaction::Kind::addVoiceNote;
            if (transaction->errorResponse && !repeatAdd(*transaction, entry)) return false;
            continue;
        }
        if (!waiting->empty() && !manager->updateError(transaction->id, ErrorResponse::dependingTransactionFailed()))
            return false;
        if (!manager->deleteTransactionWithId(transaction->id)) return false;
        if (!transaction->errorResponse)
            afterCommit([change = Change::of(*transaction, entry)] { changeNotices::accepted(change, std::nullopt); });
    }
    return true;
}

/// Sends an add of unknown outcome once more, under its key, to learn the id that the server gave.
bool DeleteRecordDataManager::repeatAdd(const ChangeEntry& add, const std::string& recordId) const {
    auto& stores = parts_.stores;
    return stores.transactions()->makeReady({add.transactionId}) &&
           stores.changeRegister()->forgetRefusal(add.number) &&
           freeDependents(stores, recordId, add.transactionNumber);
}

bool DeleteRecordDataManager::repeatAdd(const NTransaction& add, const ChangeEntry& entry) const {
    auto& stores = parts_.stores;
    return stores.currentTransactions()->clearError({add.id}) && stores.changeRegister()->forgetRefusal(entry.number) &&
           parts_.transactionManager->resetTransaction(add.id) && freeDependents(stores, add.recordId, 0);
}

/// Attachments lie in two places: where uploads and downloads put them, in a folder of their own, and in one folder for
/// all modules.
bool DeleteRecordDataManager::deleteAttachments(const std::string& recordId, const Module& module,
                                                std::vector<std::string>& files) const {
    auto& stores = parts_.stores;
    std::string attachments(rawText(ModuleIdentifier::Case::attachments));
    if (stores.databaseAdapter()->columnNames(RecordUtil::getTableName(attachments)).empty()) return true;
    auto& names = *stores.scope.naming.constant;
    ValueMap ofRecord;
    ofRecord.set(names.seid, recordId);
    auto records = parts_.recordPersistance->fetchRecords(attachments, ofRecord, std::nullopt);
    // A module without fields has no rows that could be found.
    if (!records) return true;
    for (auto& attachment : *records) {
        auto& id = attachment.recordId();
        auto name = attachment[names.recordTitle].asText();
        if (id.empty() || !name) continue;
        if (!parts_.recordPersistance->deleteRecord(id, attachments) ||
            !stores.transactionRecords()->removeTransactionRecord(id) || !dropQueued(id, attachments))
            return false;
        if (parts_.localDirectory.empty()) continue;
        if (auto file = files::pathComponent(id + "_" + std::string(*name)))
            files.push_back(parts_.localDirectory + "/Attachments/" + *file);
        auto ownFolder = files::pathComponent(id), ofModule = files::pathComponent(module.moduleName);
        if (ownFolder && ofModule)
            files.push_back(parts_.localDirectory + "/" + stores.scope.account + "/Attachments/" + *ofModule + "/" +
                            *ownFolder);
    }
    return true;
}

}  // namespace tarvo
