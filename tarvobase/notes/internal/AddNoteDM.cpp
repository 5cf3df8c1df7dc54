#include "tarvobase/notes/internal/AddNoteDM.h"

#include <algorithm>

#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/database_layer/TransactionEnd.h"
#include "tarvobase/notes/internal/NoteContext.h"
#include "tarvobase/record_changes/internal/AliasedLookups.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"

namespace tarvo {

namespace {

using NoteKind = NTransaction::Kind;

bool isVoiceNote(const Record& record, const NotesConstants& names) {
    auto flag = record[names.isVoiceNote].asText();
    return flag && *flag == "true";
}

/// Returns whether the note was deleted while its add was on its way.
bool isDeletedNote(const Stores& stores, const std::string& recordId) {
    auto queued = stores.transactions()->getTransactions(recordId);
    return queued && std::any_of(queued->transactions.begin(), queued->transactions.end(),
                                 [](auto& row) { return row.operationType == TransactionType::deleteRecord; });
}

}  // namespace

std::optional<ChangeNotSaved> AddNoteDM::addNote(Record record) const {
    if (record.recordId().empty()) return noteNotSaved("", ChangeNotSaved::noRecordId);
    auto found = NoteContext::of(parts_);
    if (!found) return noteNotSaved(record.recordId(), found.error());
    auto& context = found.value();
    auto& stores = parts_.stores;
    auto& names = *stores.scope.naming.constant;
    auto& notes = names.Notes;
    record.populateUserLookup({std::string(notes.modifiedBy), std::string(notes.ownerId), std::string(notes.createdBy)},
                              context.user);
    auto kind = isVoiceNote(record, notes) ? NoteKind::addVoiceNote : NoteKind::addTextNote;
    bool isStored = stores.databaseAdapter() && stores.databaseAdapter()->transaction("add a note", [&] {
        auto& module = context.moduleInfo.moduleName();
        if (!stores.recordIdAliases()->forget(module, record.recordId()) || !replaceAliases(stores, record))
            return false;
        auto transaction = context.transactionOf(record, kind);
        auto row = record;
        row.set(names.modifiedTime, presentSeconds());
        row.set(names.createdTime, presentSeconds());
        return parts_.recordPersistance->storeRecord(row, module) &&
               context.transactionManager->addTransaction(transaction, context.lookupRecordsOf(transaction.payload),
                                                          {});
    });
    return isStored ? std::nullopt : std::optional(noteNotSaved(record.recordId(), ChangeNotSaved::notStored));
}

void AddNoteDM::send(Executed executed, Completion finish) {
    auto request = requestOf(*executed, AddRecordNetworkServiceOperation::add);
    if (!request) return finish(TransactionResult::failure(ErrorResponse::parsingFailed()));
    request->isNote = true;
    auto completion = whenAnswered(executed, std::move(finish));
    if (executed->transaction.kind == NoteKind::addTextNote)
        return addRecordNS->addRecord(*std::move(request), std::move(completion));
    auto& module = executed->module;
    addVoiceNoteNS->sendRequest({.data = request->jsonData,
                                 .moduleName = module.moduleName,
                                 .moduleAPI = module.apiName,
                                 .recordId = executed->transaction.recordId,
                                 .key = executed->key},
                                std::move(completion));
}

TransactionResult AddNoteDM::accepted(const Executed& executed, const ChangeAnswer& answer) {
    auto& formerId = executed->transaction.recordId;
    auto store = [self = platform::strongSelf(this), executed, answer] {
        if (!self->replaceId(executed, answer.recordId) || !tidyFormerNote(self->parts_, *executed, answer.recordId) ||
            !storeTimesOfNote(self->parts_, answer.recordId, answer.record))
            return false;
        if (executed->transaction.kind == NoteKind::addVoiceNote)
            afterCommit([files = self->files_, formerId = executed->transaction.recordId, newId = answer.recordId,
                         isDeleted = isDeletedNote(self->parts_.stores, answer.recordId)] {
                isDeleted ? files.remove(formerId) : files.move(formerId, newId);
            });
        return true;
    };
    return TransactionResult::success({{formerId, answer.recordId}}, std::move(store));
}

}  // namespace tarvo
