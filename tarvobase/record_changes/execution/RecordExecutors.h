#pragma once

#include <memory>
#include <utility>

#include "tarvobase/record_changes/execution/RecordTransactionExecutor.h"
#include "tarvobase/record_changes/wire/DeleteRecordNetworkService.h"
#include "tarvobase/record_changes/wire/ImportRecordNS.h"

/// The executors of records, one per kind of change. The services belong to the scope in which an executor was made.
namespace tarvo {

/// Adds a record. Its temporary id gives way to the server's in the local tables.
class AddRecordExecutor final : public RecordTransactionExecutor {
public:
    explicit AddRecordExecutor(ExecutionParts parts)
        : RecordTransactionExecutor(std::move(parts), {NTransaction::Kind::addRecord}) {}

    std::shared_ptr<AddEditRecordNetworkServiceProtocol> addRecordNS = std::make_shared<AddEditRecordNetworkService>();

protected:
    void send(Executed executed, Completion finish) override;
    TransactionResult accepted(const Executed& executed, const ChangeAnswer& answer) override;
};

/// Edits a record. The server's record goes over the local row if the answer has it.
class EditRecordExecutor final : public RecordTransactionExecutor {
public:
    explicit EditRecordExecutor(ExecutionParts parts)
        : RecordTransactionExecutor(std::move(parts), {NTransaction::Kind::editRecord}) {}

    std::shared_ptr<AddEditRecordNetworkServiceProtocol> editRecordNS = std::make_shared<AddEditRecordNetworkService>();

protected:
    void send(Executed executed, Completion finish) override;
    TransactionResult accepted(const Executed& executed, const ChangeAnswer& answer) override;
};

/// Deletes a record.
class DeleteRecordExecutor final : public RecordTransactionExecutor {
public:
    explicit DeleteRecordExecutor(ExecutionParts parts)
        : RecordTransactionExecutor(std::move(parts), {NTransaction::Kind::deleteRecord}) {}

    std::shared_ptr<DeleteRecordNetworkServiceProtocol> deleteRecordNS = std::make_shared<DeleteRecordNetworkService>();

protected:
    void send(Executed executed, Completion finish) override;
    TransactionResult accepted(const Executed& executed, const ChangeAnswer& answer) override;
    /// A merge would give the record's edits the kind of the delete.
    bool isMergedAfterRefusal() const override { return false; }
};

/// Adds many records with one request, whose payload is the whole body: {"data": [record, ...]}. It succeeds if the
/// server has an id for each of them. Otherwise it fails with the first refusal, and only what was refused stays in the
/// payload, so that a retry doubles no record.
class ImportRecordExecutor final : public RecordTransactionExecutor {
public:
    explicit ImportRecordExecutor(ExecutionParts parts)
        : RecordTransactionExecutor(std::move(parts), {NTransaction::Kind::import}) {}

    std::shared_ptr<ImportRecordNSP> importRecordNS = std::make_shared<ImportRecordNS>();

protected:
    void send(Executed executed, Completion finish) override;
    bool isMergedAfterRefusal() const override { return false; }

private:
    TransactionResult imported(const Executed& executed, const ImportAnswer& answer);
    TransactionResult keepRefused(const Executed& executed, const std::vector<ChangeAnswer>& answers);
};

}  // namespace tarvo
