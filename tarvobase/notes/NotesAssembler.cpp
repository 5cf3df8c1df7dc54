#include "platform/Files.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/notes/NotesUseCases.h"
#include "tarvobase/notes/internal/AddNoteDM.h"
#include "tarvobase/notes/internal/EditNoteDM.h"
#include "tarvobase/notes/internal/VoiceFiles.h"

namespace tarvo {

namespace {

ExecutionParts partsOfNotes(const Stores& stores, const std::shared_ptr<TransactionManagerContract>& manager) {
    return ExecutionParts::of(stores, manager, CommonConfigration::sharedInstance().maxSingleMerge.get());
}

VoiceFiles voiceFiles() {
    auto& configuration = CommonConfigration::sharedInstance();
    bool hasFolder = configuration.localDirectoryLocation.get().has_value();
    return VoiceFiles(hasFolder ? configuration.voiceFileDirectoryLocation() : std::string());
}

}  // namespace

bool NotesAssembler::takeSound(const std::string& file, const std::string& recordId) {
    return voiceFiles().take(file, recordId);
}
bool NotesAssembler::hasSound(const std::string& recordId) {
    auto path = voiceFiles().pathOf(recordId);
    return path && files::exists(*path);
}
void NotesAssembler::removeSound(const std::string& recordId) { voiceFiles().remove(recordId); }
void NotesAssembler::moveSoundsLeftBehind(const Stores& stores) { voiceFiles().moveLeftBehind(stores); }

std::shared_ptr<AddNoteDM> NotesAssembler::getAddNoteDM(const Stores& stores,
                                                        const std::shared_ptr<TransactionManagerContract>& manager) {
    return std::make_shared<AddNoteDM>(partsOfNotes(stores, manager), voiceFiles());
}
std::shared_ptr<EditNoteDM> NotesAssembler::getEditNoteDM(const Stores& stores,
                                                          const std::shared_ptr<TransactionManagerContract>& manager) {
    return std::make_shared<EditNoteDM>(partsOfNotes(stores, manager));
}
std::shared_ptr<AddNotesUsecase> NotesAssembler::getAddNotesUsecase(
    const Stores& stores, const std::shared_ptr<TransactionManagerContract>& manager) {
    return std::make_shared<AddNotesUsecase>(getAddNoteDM(stores, manager));
}
std::shared_ptr<EditNotesUsecase> NotesAssembler::getEditNotesUsecase(
    const Stores& stores, const std::shared_ptr<TransactionManagerContract>& manager) {
    return std::make_shared<EditNotesUsecase>(getEditNoteDM(stores, manager));
}

}  // namespace tarvo
