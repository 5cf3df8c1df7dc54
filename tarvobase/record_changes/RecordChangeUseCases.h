#pragma once

#include <memory>
#include <string>

#include "tarvobase/record_changes/RecordChanges.h"
#include "tarvobase/usecase/DelegateUseCase.h"

namespace tarvo {

/// Receives what became of a change here, on the main queue: one notice per call. What the server says comes later.
class RecordChangeDelegate : public virtual platform::Object {
public:
    /// The change is stored and queued, and survives the end of the process. Its `recordId` is the id by which the
    /// record is found now.
    virtual void changeSaved(const Change& change) { static_cast<void>(change); }
    /// Nothing of the change is stored.
    virtual void changeNotSaved(const std::string& moduleName, const std::string& recordId, ChangeNotSaved reason) {
        static_cast<void>(moduleName), static_cast<void>(recordId), static_cast<void>(reason);
    }
};

/// Adds records: the local tables change at once, and the server learns of it through the queue. Held by `shared_ptr`;
/// a call returns at once.
class AddRecordUseCase final : public DelegateUseCase<RecordChangeDelegate> {
public:
    explicit AddRecordUseCase(std::shared_ptr<AddRecordDataManager> dataManager)
        : dataManager(std::move(dataManager)) {}
    void addRecord(const Record& record, const Module& module);

    const std::shared_ptr<AddRecordDataManager> dataManager;
};

/// Edits records in the same way. A column without a value clears its field.
class EditRecordUseCase final : public DelegateUseCase<RecordChangeDelegate> {
public:
    explicit EditRecordUseCase(std::shared_ptr<EditRecordDataManager> dataManager)
        : dataManager(std::move(dataManager)) {}
    void editRecord(const Record& record, const Module& module);

    const std::shared_ptr<EditRecordDataManager> dataManager;
};

/// Deletes records in the same way.
class DeleteRecordUseCase final : public DelegateUseCase<RecordChangeDelegate> {
public:
    explicit DeleteRecordUseCase(std::shared_ptr<DeleteRecordDataManager> dataManager)
        : dataManager(std::move(dataManager)) {}
    void deleteRecord(const std::string& recordID, const Module& module);

    const std::shared_ptr<DeleteRecordDataManager> dataManager;
};

}  // namespace tarvo
