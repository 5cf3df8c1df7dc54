#pragma once

#include <memory>
#include <optional>
#include <utility>

#include "tarvobase/notes/internal/AddVoiceNoteNS.h"
#include "tarvobase/notes/internal/VoiceFiles.h"
#include "tarvobase/record_changes/execution/RecordTransactionExecutor.h"
#include "tarvobase/transaction/Change.h"

namespace tarvo {

/// Adds notes. The note's row and its transaction are stored in one commit, or neither is. Sends text notes as records,
/// and voice notes as uploads; the server's id and times go into the row, and the sound moves to the new id.
class AddNoteDM final : public RecordTransactionExecutor {
public:
    AddNoteDM(ExecutionParts parts, VoiceFiles files)
        : RecordTransactionExecutor(std::move(parts),
                                    {NTransaction::Kind::addTextNote, NTransaction::Kind::addVoiceNote}),
          addVoiceNoteNS(std::make_shared<AddVoiceNoteNS>(files)),
          files_(std::move(files)) {}

    /// Takes a note with a temporary id, as `Record::getNewRecord` makes it. The text "true" under the column of
    /// `NotesConstants::isVoiceNote` makes a voice note, whose sound must be in its place. Returns why nothing is
    /// stored, or nullopt if the note is. `ChangeQueueObserver` is notified of either. Blocks its caller.
    std::optional<ChangeNotSaved> addNote(Record record) const;

    std::shared_ptr<AddEditRecordNetworkServiceProtocol> addRecordNS = std::make_shared<AddEditRecordNetworkService>();
    std::shared_ptr<AddVoiceNoteNSP> addVoiceNoteNS;

protected:
    void send(Executed executed, Completion finish) override;
    TransactionResult accepted(const Executed& executed, const ChangeAnswer& answer) override;

private:
    const VoiceFiles files_;
};

}  // namespace tarvo
