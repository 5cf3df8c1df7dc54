#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/Object.h"
#include "platform/Result.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/record_changes/RecordTransactionManager.h"
#include "tarvobase/records/RecordPersistanceDelegate.h"
#include "tarvobase/transaction/Change.h"
#include "tarvobase/transaction/TransactionManagerContract.h"

namespace tarvo {

/// What adding, editing and deleting records share.
struct RecordChangeParts {
    Stores stores;
    std::shared_ptr<RecordPersistanceDelegate> recordPersistance;
    std::shared_ptr<RecordTransactionManagerProtocol> editRecordTransactionManager;
    std::string localDirectory{};      ///< `CommonConfigration.localDirectoryLocation`; without one no file is removed
    std::string voiceFileDirectory{};  ///< `CommonConfigration.voiceFileDirectoryLocation()`
    /// The current queue, which has the changes of notes. Without it they stay when a note is deleted.
    std::shared_ptr<TransactionManagerContract> transactionManager{};
};

/// The change in the queue, or why nothing of it is stored. `ChangeQueueObserver` is notified of either.
using SavedChange = Result<Change, ChangeNotSaved>;

/// Adds records. The record, its place in the queue, and what belongs to it are stored in one transaction, or nothing
/// is; when the call returns, a screen sees the record. Blocks its caller; may be called from any thread.
class AddRecordDataManager final : public platform::Object {
public:
    explicit AddRecordDataManager(RecordChangeParts parts) : parts_(std::move(parts)) {}
    /// Takes a record with a temporary id, as `Record::getNewRecord` makes it.
    SavedChange addRecord(Record record, const Module& module) const;

private:
    const RecordChangeParts parts_;
};

/// Edits records, in the same way. The columns that the record has are written, also those without a value.
class EditRecordDataManager final : public platform::Object {
public:
    explicit EditRecordDataManager(RecordChangeParts parts) : parts_(std::move(parts)) {}
    SavedChange editRecord(Record record, const Module& module) const;

private:
    bool storeInTransactionRecords(const Record& record, const Module& module) const;

    const RecordChangeParts parts_;
};

/// Deletes records, in the same way, with what waits for them in the queue, their attachments, and, after the commit,
/// the files of both.
class DeleteRecordDataManager final : public platform::Object {
public:
    explicit DeleteRecordDataManager(RecordChangeParts parts) : parts_(std::move(parts)) {}
    SavedChange deleteRecord(std::string recordID, const Module& module) const;

private:
    bool keepInTransactionRecords(const std::string& recordId, const Module& module) const;
    bool dropQueued(const std::string& recordId, const std::string& moduleName) const;
    bool drop(const Transaction& row, const ChangeEntry& entry) const;
    bool dropQueuedNote(const std::string& recordId, bool& isSoundNeeded) const;
    bool repeatAdd(const ChangeEntry& add, const std::string& recordId) const;
    bool repeatAdd(const NTransaction& add, const ChangeEntry& entry) const;
    bool deleteAttachments(const std::string& recordId, const Module& module, std::vector<std::string>& files) const;

    const RecordChangeParts parts_;
};

}  // namespace tarvo
