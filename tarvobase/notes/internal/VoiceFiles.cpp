#include "tarvobase/notes/internal/VoiceFiles.h"

#include <filesystem>
#include <vector>

#include "platform/Files.h"
#include "tarvobase/records/sql/RecordInDatabase.h"
#include "tarvobase/utils/TemporaryIds.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"
#include "tarvobase/value_objects/naming/ModuleIdentifier.h"

namespace tarvo {

namespace {

std::vector<std::string> temporaryIdsOfSounds(const std::string& directory) {
    std::vector<std::string> ids;
    std::error_code error;
    std::filesystem::directory_iterator file(directory, error), end;
    while (!error && file != end) {
        auto id = file->path().stem().string();
        bool isSound = file->path().extension() == rawText(VoiceNoteConstants::fileExtension);
        if (isSound && isTemporaryRecordId(id)) ids.push_back(std::move(id));
        file.increment(error);
    }
    return ids;
}

}  // namespace

std::optional<std::string> VoiceFiles::pathOf(const std::string& recordId) const {
    auto name = files::pathComponent(recordId + std::string(rawText(VoiceNoteConstants::fileExtension)));
    return directory_.empty() || recordId.empty() || !name ? std::nullopt : std::optional(directory_ + *name);
}

bool VoiceFiles::take(const std::string& file, const std::string& recordId) const {
    auto path = pathOf(recordId);
    return path && files::createDirectories(directory_) && files::copyAtomically(file, *path);
}

void VoiceFiles::move(const std::string& formerId, const std::string& newId) const {
    auto from = pathOf(formerId), to = pathOf(newId);
    if (from && to && files::exists(*from)) files::move(*from, *to);
}

void VoiceFiles::remove(const std::string& recordId) const {
    if (auto path = pathOf(recordId)) files::remove(*path);
}

void VoiceFiles::moveLeftBehind(const Stores& stores) const {
    auto notes = std::string(rawText(ModuleIdentifier::Case::notes));
    auto records = RecordInDatabase::make(stores.databaseAdapter());
    for (auto& id : temporaryIdsOfSounds(directory_)) {
        auto accepted = stores.recordIdAliases()->realId(notes, id);
        if (!accepted || !accepted.value()) continue;
        auto& newId = *accepted.value();
        auto note = records->fetchRecord(notes, newId);
        auto isVoiceNote =
            note ? note->valueOf(stores.scope.naming.constant->Notes.isVoiceNote).toText() : std::nullopt;
        auto path = pathOf(newId);
        if (isVoiceNote == "true" && path && !files::exists(*path)) move(id, newId);
    }
}

}  // namespace tarvo
