#include "tarvobase/notes/internal/NoteContext.h"

#include <algorithm>
#include <chrono>

#include "platform/Clock.h"
#include "tarvobase/record_changes/internal/RecordSides.h"
#include "tarvobase/transaction/ChangeNotices.h"
#include "tarvobase/utils/ReplacedTexts.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"

namespace tarvo {

namespace {

std::string moduleOfNotes() { return std::string(rawText(ModuleIdentifier::Case::notes)); }

}  // namespace

NoteContext::Found NoteContext::of(const ExecutionParts& parts) {
    auto info = parts.moduleDM->getModuleInfo(moduleOfNotes());
    if (!info) return ChangeNotSaved::noModule;
    auto& account = parts.stores.scope.account;
    if (account.empty()) return ChangeNotSaved::noUser;
    auto users = parts.stores.users()->getUsersWithBrenUID({account});
    if (!users || users->empty()) return ChangeNotSaved::noUser;
    auto manager = parts.transactionManager.lock();
    if (!manager) return ChangeNotSaved::notStored;
    return NoteContext{manager, AddEditRecordTransactionHandler(*manager, parts.stores, parts.maxSingleMerge),
                       *std::move(info), users->front()};
}

NTransaction NoteContext::transactionOf(const Record& record, NTransaction::Kind kind) {
    return {.id = transactionManager->getNewTransactionId(),
            .recordId = record.recordId(),
            .module = ModuleIdentifier::Case::notes,
            .kind = kind,
            .payload = handler.getPayload(record, moduleInfo.metadata)};
}

std::vector<std::string> NoteContext::lookupRecordsOf(const ValueMap& payload) {
    auto records = handler.getLookupRecords(payload, moduleInfo.metadata);
    auto parent = payload.valueOf(FieldAPIConstant.Notes.seid).textOr("");
    if (!parent.empty() && std::find(records.begin(), records.end(), parent) == records.end())
        records.push_back(std::move(parent));
    return records;
}

Value presentSeconds() {
    return std::chrono::duration_cast<std::chrono::seconds>(platform::Clock::now().time_since_epoch()).count();
}

ChangeNotSaved noteNotSaved(const std::string& recordId, ChangeNotSaved reason) {
    changeNotices::notSaved(moduleOfNotes(), recordId, reason);
    return reason;
}

bool keepFormerNote(const ExecutionParts& parts, const Record& stored, const Record& edit) {
    auto sides = parts.stores.currentTransactionRecords();
    auto found = sides->getTransactionRecord(stored.recordId());
    bool isKept = found && found.value();
    return sides->storeTransactionRecord({.recordId = stored.recordId(),
                                          .module = ModuleIdentifier::Case::notes,
                                          .deviceData = edit.getDictionary(),
                                          .serverData = isKept ? found.value()->serverData : stored.getDictionary()});
}

bool tidyFormerNote(const ExecutionParts& parts, const ExecutedTransaction& executed, const std::string& recordId) {
    auto& transaction = executed.transaction;
    auto sides = parts.stores.currentTransactionRecords();
    if (transaction.recordId != recordId && !sides->replaceRecordId(recordId, transaction.recordId)) return false;
    auto queued = parts.stores.currentTransactions()->getTransactionsWithRecordIds({recordId, transaction.recordId});
    auto found = sides->getTransactionRecord(recordId);
    if (!queued || !found || !found.value()) return queued.has_value();
    bool isLast = std::all_of(queued->begin(), queued->end(), [&](auto& other) { return other.id == transaction.id; });
    if (isLast) return sides->removeTransactionRecord(recordId);
    auto record = *found.value();
    replaceTexts(record.serverData, transaction.recordId, recordId);
    RecordSides::layOver(record.serverData, transaction.payload, parts.metadataOf(executed.module));
    return sides->storeTransactionRecord(record);
}

bool storeTimesOfNote(const ExecutionParts& parts, const std::string& recordId, const std::optional<ValueMap>& times) {
    if (!times || !parts.recordPersistance->fetchRecord(moduleOfNotes(), recordId)) return true;
    auto record = *times;
    record.set(RecordConstants::FieldAPINames::Id, recordId);
    return parts.recordPersistance->modifyRecord(moduleOfNotes(), record);
}

}  // namespace tarvo
