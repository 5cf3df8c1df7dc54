#include "host/commands/NoteCommands.h"

#include "host/commands/ChangeCommands.h"
#include "host/commands/CommandSteps.h"
#include "host/commands/Console.h"
#include "tarvobase/change_queues/ChangeQueues.h"
#include "tarvobase/notes/NotesUseCases.h"
#include "tarvobase/notification/BrenNotificationCenter.h"
#include "tarvobase/record_changes/RecordChanges.h"
#include "tarvobase/transaction/ChangeQueueObserver.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"

namespace tarvo::host {

namespace {

constexpr const char* tokenNeededForNotes =
    "the fields of the module Notes are not stored, and there is no token to fetch them";

/// Waits for the notice that says what became of the first change of a note.
class SavedNote final : public ChangeQueueObserver {
public:
    std::optional<SavedChange> saved;

    void changeSaved(const Change& change) override {
        if (change.queue == ChangeQueue::current && change.moduleName == "Notes" && !saved) saved = SavedChange(change);
    }
    void changeNotSaved(const std::string&, const std::string&, ChangeNotSaved reason) override {
        if (!saved) saved = SavedChange(reason);
    }
};

std::string sentenceFor(ChangeNotSaved reason) {
    switch (reason) {
        case ChangeNotSaved::noUser:
            return "the user of the account is not stored; run init first";
        case ChangeNotSaved::noRow:
            return "there is no such note";
        case ChangeNotSaved::nothingChanged:
            return "the note has these values already";
        default:
            return "the note could not be stored";
    }
}

/// Runs a use case with a note. Returns the number of the change, or the exit status.
template <class UseCase>
Result<std::int64_t, int> numberOfChange(const std::shared_ptr<UseCase>& usecase, const Record& record) {
    auto notice = std::make_shared<SavedNote>();
    BrenNotificationCenter::shared().add<ChangeQueueObserver>(notice);
    usecase->execute(typename UseCase::Request(record), [](auto*, auto*) {});
    MainQueue::shared()->runUntil([&] { return notice->saved.has_value(); }, patience);
    if (!notice->saved) return fail("the note could not be stored in time");
    auto& saved = *notice->saved;
    if (!saved) return fail(sentenceFor(saved.error()));
    return saved->number;
}

Record noteOf(const Arguments& arguments) {
    auto stores = Stores::current();
    auto& names = stores.scope.naming.constant->Notes;
    auto record = Record::getNewRecord("Notes");
    if (arguments.title) record.set(names.noteTitle, *arguments.title);
    record.set(names.noteContent, arguments.text);
    record.set(names.seid, stores.recordIdAliases()->currentId(arguments.module, arguments.recordId));
    record.set(names.seModule, arguments.module);
    record.set(names.isCheckIn, "false");
    record.set(names.isVoiceNote, arguments.voiceFile ? "true" : "false");
    return record;
}

}  // namespace

int noteRecord(Host& host, const Arguments& arguments) {
    auto path = openDatabase(host, arguments);
    if (!path) return path.error();
    if (auto status = findModule(host, arguments, tokenNeededForNotes)) return *status;
    auto ofNotes = arguments;
    ofNotes.module = "Notes";
    auto fields = neededFields(host, ofNotes, tokenNeededForNotes);
    if (!fields) return fields.error();
    auto record = noteOf(arguments);
    if (arguments.voiceFile && !NotesAssembler::takeSound(*arguments.voiceFile, record.recordId()))
        return fail("the sound cannot be copied");
    auto manager = ChangeQueues::shared().transactionManager();
    auto number = numberOfChange(NotesAssembler::getAddNotesUsecase(Stores::current(), manager), record);
    return number ? reportChange(ofNotes, record.recordId(), *number) : number.error();
}

Result<std::int64_t, int> editedNote(const Record& record) {
    auto manager = ChangeQueues::shared().transactionManager();
    return numberOfChange(NotesAssembler::getEditNotesUsecase(Stores::current(), manager), record);
}

}  // namespace tarvo::host
