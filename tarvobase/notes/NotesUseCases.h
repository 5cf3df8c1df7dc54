#pragma once

#include <memory>
#include <string>
#include <utility>

#include "tarvobase/metadata/Stores.h"
#include "tarvobase/records/Record.h"
#include "tarvobase/transaction/TransactionManagerContract.h"
#include "tarvobase/usecase/Usecase.h"

namespace tarvo {

class AddNoteDM;
class EditNoteDM;

/// What the operations of notes fail with. Nothing raises it at present.
enum class NotesError { permissionDenied };

template <>
struct EnumCases<NotesError> {
    static constexpr EnumCase<NotesError> cases[] = {{NotesError::permissionDenied, "permissionDenied"}};
};

/// Types of `AddNotesUsecase`.
struct AddNotesOperation {
    struct Request : BaseRequest {
        explicit Request(Record record) : record(std::move(record)) {}
        Record record;  ///< a new note, as `Record::getNewRecord` makes it
    };
    struct Response : BaseResponse {};
    using DomainError = NotesError;
};

/// Types of `EditNotesUsecase`.
struct EditNotesOperation {
    struct Request : BaseRequest {
        explicit Request(Record record) : record(std::move(record)) {}
        Record record;  ///< the id of the note with the columns to be written
    };
    struct Response : BaseResponse {};
    using DomainError = NotesError;
};

/// Adds a note here at once; the server learns of it through the current queue. The callbacks are never called: the
/// record tables have the note, and `ChangeQueueObserver` is notified.
class AddNotesUsecase final : public Usecase<AddNotesOperation> {
public:
    explicit AddNotesUsecase(std::shared_ptr<AddNoteDM> dataManager) : dataManager(std::move(dataManager)) {}
    const std::shared_ptr<AddNoteDM> dataManager;

protected:
    void run(std::shared_ptr<const Request> request, UICallback) override;
};

/// Edits a note in the same way.
class EditNotesUsecase final : public Usecase<EditNotesOperation> {
public:
    explicit EditNotesUsecase(std::shared_ptr<EditNoteDM> dataManager) : dataManager(std::move(dataManager)) {}
    const std::shared_ptr<EditNoteDM> dataManager;

protected:
    void run(std::shared_ptr<const Request> request, UICallback) override;
};

/// Puts the operations of notes together over the stores and the current queue of an account. The manager owns the data
/// managers that it executes with, and they do not hold it.
struct NotesAssembler {
    static std::shared_ptr<AddNoteDM> getAddNoteDM(const Stores& stores,
                                                   const std::shared_ptr<TransactionManagerContract>& manager);
    static std::shared_ptr<EditNoteDM> getEditNoteDM(const Stores& stores,
                                                     const std::shared_ptr<TransactionManagerContract>& manager);
    static std::shared_ptr<AddNotesUsecase> getAddNotesUsecase(
        const Stores& stores, const std::shared_ptr<TransactionManagerContract>& manager);
    static std::shared_ptr<EditNotesUsecase> getEditNotesUsecase(
        const Stores& stores, const std::shared_ptr<TransactionManagerContract>& manager);
    /// Copies a sound to where that of a voice note is looked for. Returns whether it is there. Call it before the note
    /// is added.
    static bool takeSound(const std::string& file, const std::string& recordId);
    /// Returns whether a sound is kept under the id. All accounts keep theirs in one folder, so it may belong to a note
    /// of another account, whose database this one does not know.
    static bool hasSound(const std::string& recordId);
    /// Removes the sound of a note, if it has one.
    static void removeSound(const std::string& recordId);
    /// Moves the sounds of accepted notes that a process left under their temporary ids when it ended. Call it when
    /// work on an account begins.
    static void moveSoundsLeftBehind(const Stores& stores);
};

}  // namespace tarvo
