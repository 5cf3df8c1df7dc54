#include "bridge/calls/Calls.h"
#include "bridge/forms/JsonForm.h"
#include "bridge/forms/RecordForms.h"
#include "tarvobase/change_queues/ChangeQueues.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/notes/NotesUseCases.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"

namespace tarvo::bridge {

namespace {

struct NoteRequest {
    JsonRecord record;
    std::optional<std::string> voiceFile;  // the path of a sound
    static constexpr auto fields() {
        return describe(field("record", &NoteRequest::record), field("voiceFile", &NoteRequest::voiceFile));
    }
};
struct NoteEditRequest {
    JsonRecord record;
    static constexpr auto fields() { return describe(field("record", &NoteEditRequest::record)); }
};

/// Runs a use case, which answers nothing. The call ends when the work is done.
template <class UseCase>
void runOfNote(const std::shared_ptr<UseCase>& usecase, Record record, const CallPtr& call) {
    call->keepUntilEnd(usecase);
    usecase->execute(typename UseCase::Request(std::move(record)), [call](auto*, auto*) {});
}

void addNote(const NoteRequest& request, const CallPtr& call) {
    auto manager = ChangeQueues::shared().transactionManager();
    if (!manager) return call->refuse("no database is open");
    auto form = request.record;
    if (form.recordId.empty()) form.recordId = Record::getNewRecord(form.moduleName).recordId();
    auto record = form.record();
    if (request.voiceFile) {
        if (!NotesAssembler::takeSound(*request.voiceFile, form.recordId))
            return call->refuse("the voiceFile cannot be copied");
        record.set(FieldIdentifierConstants().Notes.isVoiceNote, "true");
    }
    runOfNote(NotesAssembler::getAddNotesUsecase(Stores::current(), manager), std::move(record), call);
}

void editNote(const NoteEditRequest& request, const CallPtr& call) {
    auto manager = ChangeQueues::shared().transactionManager();
    if (!manager) return call->refuse("no database is open");
    runOfNote(NotesAssembler::getEditNotesUsecase(Stores::current(), manager), request.record.record(), call);
}

}  // namespace

void addNoteCalls(Registry& registry) {
    registry.addOperation<NoteRequest>("AddNotesUsecase", addNote);
    registry.addOperation<NoteEditRequest>("EditNotesUsecase", editNote);
}

}  // namespace tarvo::bridge
