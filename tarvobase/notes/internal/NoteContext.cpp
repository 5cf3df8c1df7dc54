#include "tarvobase/notes/internal/NoteContext.h"

#include <algorithm>
#include <chrono>

#include "platform/Clock.h"
#include "tarvobase/transaction/ChangeNotices.h"
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

bool storeTimesOfNote(const ExecutionParts& parts, const std::string& recordId, const std::optional<ValueMap>& times) {
    if (!times || !parts.recordPersistance->fetchRecord(moduleOfNotes(), recordId)) return true;
    auto record = *times;
    record.set(RecordConstants::FieldAPINames::Id, recordId);
    return parts.recordPersistance->modifyRecord(moduleOfNotes(), record);
}

}  // namespace tarvo
