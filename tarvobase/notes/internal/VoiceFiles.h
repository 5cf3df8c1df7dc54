#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tarvobase/metadata/Stores.h"

namespace tarvo {

/// How the file of a voice note is named.
enum class VoiceNoteConstants { fileName, fileExtension };

template <>
struct EnumCases<VoiceNoteConstants> {
    using C = VoiceNoteConstants;
    static constexpr EnumCase<C> cases[] = {{C::fileName, "fileName", "Voice Note"},
                                            {C::fileExtension, "fileExtension", ".wav"}};
};

/// The sounds of voice notes. A sound lies in a folder of the account under the id of its note, first the temporary
/// one. A failure is logged, and never holds up a note. Any thread may use it; each call blocks its caller.
class VoiceFiles {
public:
    /// Takes the folder, which ends with "/" (`CommonConfigration.voiceFileDirectoryLocation`). Empty means none.
    explicit VoiceFiles(std::string directory) : directory_(std::move(directory)) {}

    /// Returns the path of a note's sound, whether it exists or not; nullopt for an id that cannot be in a path.
    std::optional<std::string> pathOf(const std::string& recordId) const;
    /// Copies a sound to the place of a note's. Returns whether it is there, whole. Call it before the note is added.
    bool take(const std::string& file, const std::string& recordId) const;
    /// Moves a sound to the server's id of its note. A note without a sound is left alone.
    void move(const std::string& formerId, const std::string& newId) const;
    /// Removes the sound of a note, if there is one.
    void remove(const std::string& recordId) const;
    /// Moves the sounds of accepted notes that a process left under their temporary ids when it ended. Call it when
    /// work on an account begins. Accounts share the folder, and after a loss of the settings one of them may have
    /// given the temporary id to a note of its own: only a voice note that lacks its sound gets one.
    void moveLeftBehind(const Stores& stores) const;

private:
    std::string directory_;
};

}  // namespace tarvo
