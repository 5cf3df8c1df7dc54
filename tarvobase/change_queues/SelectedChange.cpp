#include "tarvobase/change_queues/SelectedChange.h"

#include <utility>

#include "platform/Text.h"
#include "tarvobase/record_changes/internal/ChangePayload.h"
#include "tarvobase/record_changes/internal/QueuedChange.h"
#include "tarvobase/utils/TemporaryIds.h"

namespace tarvo {

SelectedChange::SelectedChange(ChangeEntry entry, Row row) : entry_(std::move(entry)), row_(std::move(row)) {
    moduleName_ = older() ? older()->moduleName : current()->module.rawValue();
}

std::optional<SelectedChange> SelectedChange::of(const Stores& stores, const ChangeEntry& entry) {
    if (entry.organisation != stores.scope.organisation) return std::nullopt;
    if (entry.queue == ChangeQueue::older) {
        auto row = stores.transactions()->getTransaction(entry.transactionId);
        if (!row || !row.value()) return std::nullopt;
        return SelectedChange(entry, *row.value());
    }
    auto rows =
        stores.currentTransactions()->getTransactionsWithIds({text::toInteger(entry.transactionId).value_or(0)});
    if (!rows || rows->empty()) return std::nullopt;
    return SelectedChange(entry, rows->front());
}

const std::string& SelectedChange::recordId() const { return older() ? older()->recordID : current()->recordId; }

bool SelectedChange::isEdit() const {
    if (older()) return older()->operationType == TransactionType::editRecord;
    return depndencyType(current()->kind) == RecordDependency::Kind::edit;
}

bool SelectedChange::isDelete() const {
    if (older()) return older()->operationType == TransactionType::deleteRecord;
    return depndencyType(current()->kind) == RecordDependency::Kind::delete_;
}

std::optional<ValueMap> SelectedChange::payload() const {
    return older() ? ChangePayload::of(*older()) : std::optional(current()->payload);
}

bool SelectedChange::mayHaveArrived() const {
    if (entry_.mayHaveArrived()) return true;
    if (current()) return current()->status.which == NTransaction::Status::Case::syncing;
    QueuedChange row(*older());
    return row.isSending() && !row.hasFailed();
}

bool SelectedChange::createsRecord() const {
    if (!isTemporaryRecordId(recordId())) return false;
    if (current()) return tarvo::createsRecord(current()->kind);
    return older()->operationType == TransactionType::addRecord ||
           older()->operationType == TransactionType::addAttachment;
}

std::int64_t SelectedChange::place() const {
    if (!createsRecord()) return 0;
    return current() ? current()->id : entry_.transactionNumber;
}

Change SelectedChange::change() const {
    return older() ? Change::of(*older(), entry_) : Change::of(*current(), entry_);
}

}  // namespace tarvo
