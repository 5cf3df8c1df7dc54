#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/Result.h"
#include "tarvobase/metadata/ModuleInfo.h"
#include "tarvobase/record_changes/execution/RecordTransactionExecutor.h"
#include "tarvobase/transaction/AddEditRecordTransactionHandler.h"
#include "tarvobase/transaction/Change.h"
#include "tarvobase/value_objects/account/User.h"

namespace tarvo {

/// What adding and editing notes share: the module, the user of the account, and the current queue.
struct NoteContext {
    using Found = Result<NoteContext, ChangeNotSaved>;

    std::shared_ptr<TransactionManagerContract> transactionManager;
    AddEditRecordTransactionHandler handler;
    ModuleInfo moduleInfo;
    User user;

    static Found of(const ExecutionParts& parts);

    /// Returns a transaction of a note. Its fields are those of the module.
    NTransaction transactionOf(const Record& record, NTransaction::Kind kind);
    /// Returns the records that a payload names: those that it looks up, and the record that the note is about.
    std::vector<std::string> lookupRecordsOf(const ValueMap& payload);
};

/// Returns the present time as columns hold it, in whole seconds since 1970.
Value presentSeconds();

/// Notifies that nothing of a note is stored. Returns the reason.
ChangeNotSaved noteNotSaved(const std::string& recordId, ChangeNotSaved reason);

/// Keeps a note as it is stored before its first edit that waits. Call it inside the transaction that queues the edit.
bool keepFormerNote(const ExecutionParts& parts, const Record& stored, const Record& edit);
/// Lays what the server has accepted of a note over its former values, or forgets them if no other change of it waits.
/// `recordId` is the server's id. Call it inside the transaction that stores the answer.
bool tidyFormerNote(const ExecutionParts& parts, const ExecutedTransaction& executed, const std::string& recordId);

/// Stores the times that the server gave a note. A note without a row was deleted here, and gets none. Call it inside
/// the transaction that stores the answer.
bool storeTimesOfNote(const ExecutionParts& parts, const std::string& recordId, const std::optional<ValueMap>& times);

}  // namespace tarvo
