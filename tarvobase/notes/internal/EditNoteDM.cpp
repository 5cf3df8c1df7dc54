#include "tarvobase/notes/internal/EditNoteDM.h"

#include <algorithm>

#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/notes/internal/NoteContext.h"
#include "tarvobase/record_changes/internal/AliasedLookups.h"
#include "tarvobase/records/wire/ModuleParser.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"

namespace tarvo {

namespace {

using QueuedKind = NTransaction::Kind;

/// Returns whether a note is known not to be a check-in. The title of a check-in is made by the server. The column may
/// have the name that the parser gives to system properties.
bool isPlainNote(const Record& record, const Record& stored, const NotesConstants& names) {
    for (auto note : {&record, &stored})
        for (auto& column : {std::string(names.isCheckIn), ModuleParser::systemKey(names.isCheckIn)})
            if (auto flag = note->valueOf(column).toText()) return *flag == "false";
    return false;
}

bool differs(const Record& record, const Record& stored, std::string_view column) {
    if (!record.hasColumn(column)) return false;
    auto mine = record[column].asText(), theirs = stored[column].asText();
    return mine && theirs ? *mine != *theirs : static_cast<bool>(mine) != static_cast<bool>(theirs);
}

}  // namespace

std::optional<ChangeNotSaved> EditNoteDM::editNote(Record record) const {
    if (record.recordId().empty()) return noteNotSaved("", ChangeNotSaved::noRecordId);
    auto found = NoteContext::of(parts_);
    if (!found) return noteNotSaved(record.recordId(), found.error());
    auto& context = found.value();
    std::optional<ChangeNotSaved> reason = ChangeNotSaved::notStored;
    auto& database = parts_.stores.databaseAdapter();
    bool isStored = database && database->transaction("edit a note", [&] {
        reason = storeEdit(context, record);
        return !reason;
    });
    if (!isStored) return noteNotSaved(record.recordId(), reason.value_or(ChangeNotSaved::notStored));
    mergeWithRefused(context, record.recordId());
    return std::nullopt;
}

std::optional<ChangeNotSaved> EditNoteDM::storeEdit(NoteContext& context, Record& record) const {
    auto& stores = parts_.stores;
    auto& module = context.moduleInfo.moduleName();
    auto& names = *stores.scope.naming.constant;
    record.setRecordId(stores.recordIdAliases()->currentId(module, record.recordId()));
    auto stored = parts_.recordPersistance->fetchRecord(module, record.recordId());
    if (!stored) return ChangeNotSaved::noRow;
    auto modified = getModifiedNoteRecord(record, *stored);
    if (modified.columnCount() == 1) return ChangeNotSaved::nothingChanged;
    auto transaction = context.transactionOf(modified, QueuedKind::editNote);
    auto former = context.transactionManager->getLastTransaction(record.recordId(), {QueuedKind::editNote});
    if (!former) return ChangeNotSaved::notStored;
    std::vector<TransactionDependency> dependencies;
    for (auto& edit : *former)
        dependencies.push_back({transaction.id, edit.id, TransactionDependency::Kind::sameRecord});
    record.populateUserLookup({std::string(names.Notes.modifiedBy)}, context.user);
    record.set(names.modifiedTime, presentSeconds());
    bool isStored = keepFormerNote(parts_, *stored, modified) && replaceAliases(stores, record) &&
                    parts_.recordPersistance->modifyRecord(module, record) &&
                    context.transactionManager->addTransaction(
                        transaction, context.handler.getLookupRecords(transaction.payload, context.moduleInfo.metadata),
                        dependencies);
    return isStored ? std::nullopt : std::optional(ChangeNotSaved::notStored);
}

/// Returns the columns that the server does not have; the id alone if there are none. A column that the edit does not
/// bring stays as it is.
Record EditNoteDM::getModifiedNoteRecord(const Record& record, const Record& stored) const {
    auto& names = parts_.stores.scope.naming.constant->Notes;
    Record modified(ValueMap(), record.recordId(), record.moduleName(), parts_.stores.scope.naming);
    if (differs(record, stored, names.noteTitle) && isPlainNote(record, stored, names))
        modified.set(names.noteTitle, record.valueOf(names.noteTitle));
    if (differs(record, stored, names.noteContent)) modified.set(names.noteContent, record.valueOf(names.noteContent));
    return modified;
}

/// An edit may be the answer to a refusal, and would wait for what was refused for ever. What the server has not
/// decided on stays as it is.
void EditNoteDM::mergeWithRefused(NoteContext& context, const std::string& recordId) const {
    auto queued = context.transactionManager->getTransactions(
        recordId,
        TransactionManagerContract::Kinds{QueuedKind::addTextNote, QueuedKind::addVoiceNote, QueuedKind::editNote},
        std::nullopt);
    if (!queued || queued->size() < 2) return;
    bool isRefused = std::any_of(queued->begin(), queued->end(), [](auto& one) {
        return one.errorResponse && one.errorResponse->code != ErrorResponse::parsingFailed().code;
    });
    // The first is the add if there is one. What is merged into it is an add as well.
    if (isRefused) context.handler.mergeTransaction(queued->front(), context.moduleInfo.metadata);
}

void EditNoteDM::send(Executed executed, Completion finish) {
    auto request = requestOf(*executed, AddRecordNetworkServiceOperation::edit);
    if (!request) return finish(TransactionResult::failure(ErrorResponse::parsingFailed()));
    request->isNote = true;
    editRecordNS->addRecord(*std::move(request), whenAnswered(std::move(executed), std::move(finish)));
}

TransactionResult EditNoteDM::accepted(const Executed& executed, const ChangeAnswer& answer) {
    return TransactionResult::success({}, [parts = parts_, executed, times = answer.record] {
        auto& recordId = executed->transaction.recordId;
        return tidyFormerNote(parts, *executed, recordId) && storeTimesOfNote(parts, recordId, times);
    });
}

}  // namespace tarvo
