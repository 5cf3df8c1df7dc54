#pragma once

#include <memory>
#include <optional>
#include <utility>

#include "tarvobase/record_changes/execution/RecordTransactionExecutor.h"
#include "tarvobase/transaction/Change.h"

namespace tarvo {

struct NoteContext;

/// Edits notes. The row and the transaction are stored in one commit, or neither is. Only the title and the text of a
/// note are sent, as far as they differ from the stored ones. The edits of a note go in their order.
class EditNoteDM final : public RecordTransactionExecutor {
public:
    explicit EditNoteDM(ExecutionParts parts)
        : RecordTransactionExecutor(std::move(parts), {NTransaction::Kind::editNote}) {}

    /// Returns why nothing is stored, or nullopt if the edit is. `ChangeQueueObserver` is notified of either. Blocks
    /// its caller.
    std::optional<ChangeNotSaved> editNote(Record record) const;

    std::shared_ptr<AddEditRecordNetworkServiceProtocol> editRecordNS = std::make_shared<AddEditRecordNetworkService>();

protected:
    void send(Executed executed, Completion finish) override;
    TransactionResult accepted(const Executed& executed, const ChangeAnswer& answer) override;

private:
    std::optional<ChangeNotSaved> storeEdit(NoteContext& context, Record& record) const;
    Record getModifiedNoteRecord(const Record& record, const Record& stored) const;
    void mergeWithRefused(NoteContext& context, const std::string& recordId) const;
};

}  // namespace tarvo
