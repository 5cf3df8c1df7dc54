#include "tarvobase/record_changes/internal/SupersededEdits.h"

#include <algorithm>
#include <limits>

#include "platform/Json.h"
#include "tarvobase/record_changes/internal/ChangePayload.h"
#include "tarvobase/record_changes/internal/EndedChanges.h"
#include "tarvobase/record_changes/internal/QueuedChange.h"
#include "tarvobase/records/RecordUtil.h"
#include "tarvobase/value_objects/transaction/ChangeRegister.h"

namespace tarvo {

namespace {

bool isLaterEdit(const Transaction& change, const Transaction& failed) {
    return change.operationType == TransactionType::editRecord && change.moduleName == failed.moduleName &&
           change.transactionTime > failed.transactionTime;
}

/// Stores a shorter payload of a failed edit. It gets a new key, unless the server may have applied it under its own.
bool storeShorter(const Stores& stores, Transaction failed, const ValueMap& payload) {
    auto changes = stores.changeRegister();
    auto entries = changes->entriesOf(ChangeQueue::older, {failed.transactionID});
    failed.dataJSON = ChangePayload::body(payload);
    if (!entries || !failed.dataJSON || !stores.transactions()->storeTransaction(failed)) return false;
    if (entries->empty()) return true;
    auto& entry = entries->front();
    bool isReadyAgain = !entry.lastRefusal && entry.sends > 0 && !entry.mayHaveArrived();
    if (isReadyAgain) return changes->renewKey(entry.number).has_value();
    if (!entry.isKnownToBeRefused()) return true;
    return changes->renewKey(entry.number) && changes->noteRefusal(entry.number, *entry.lastRefusal, false);
}

/// Returns what is left of a payload after those columns have gone that another one sets. The id stays.
ValueMap withoutThoseOf(ValueMap payload, const ValueMap& other) {
    for (auto& entry : other)
        if (entry.name != RecordConstants::FieldAPINames::Id) payload.remove(entry.name);
    return payload;
}

bool isOnlyId(const ValueMap& payload) {
    return std::all_of(payload.begin(), payload.end(),
                       [](auto& entry) { return entry.name == RecordConstants::FieldAPINames::Id; });
}

/// `alsoReady` counts those as well that wait to be sent.
bool leaveOutOfOlder(const Stores& stores, const NTransaction& accepted, std::int64_t number, bool alsoReady) {
    auto queued = stores.transactions()->getTransactions(accepted.recordId);
    if (!queued) return false;
    Transaction later{.recordID = accepted.recordId,
                      .moduleName = accepted.module.rawValue(),
                      .operationType = TransactionType::editRecord,
                      .dataJSON = ChangePayload::body(accepted.payload),
                      .transactionTime = std::numeric_limits<std::int64_t>::max()};
    return std::all_of(queued->transactions.begin(), queued->transactions.end(), [&](auto& row) {
        if (row.operationType != TransactionType::editRecord) return true;
        auto entries = stores.changeRegister()->entriesOf(ChangeQueue::older, {row.transactionID});
        if (!entries) return false;
        if (entries->empty() || entries->front().number > number) return true;
        QueuedChange change(row);
        bool isUnsent = change.hasFailed() || (alsoReady && change.isReady() && !entries->front().mayHaveArrived());
        return !isUnsent || SupersededEdits::leaveOut(stores, row, {later});
    });
}

}  // namespace

bool SupersededEdits::leaveOut(const Stores& stores, const Transaction& failed,
                               const std::vector<Transaction>& others) {
    auto payload = ChangePayload::of(failed);
    if (!payload) return true;
    auto rest = *payload;
    for (auto& other : others) {
        auto set = isLaterEdit(other, failed) ? ChangePayload::of(other) : std::nullopt;
        if (set) rest = withoutThoseOf(std::move(rest), *set);
    }
    if (rest.size() == payload->size()) return true;
    // The id of the record is always left.
    if (rest.size() > 1) return storeShorter(stores, failed, rest);
    if (!endOlderChanges(stores, {failed}, ChangeOutcome::merged)) return false;
    auto left = stores.transactions()->getTransactions(failed.recordID);
    return left &&
           (!left->transactions.empty() || stores.transactionRecords()->removeTransactionRecord(failed.recordID));
}

bool SupersededEdits::leaveOutAccepted(const Stores& stores, const Transaction& accepted,
                                       const std::vector<Transaction>& rows) {
    return std::all_of(rows.begin(), rows.end(), [&](auto& row) {
        bool isFailedEdit = row.operationType == TransactionType::editRecord && QueuedChange(row).hasFailed();
        return !isFailedEdit || leaveOut(stores, row, {accepted});
    });
}

bool SupersededEdits::leaveOutAccepted(const Stores& stores, const NTransaction& accepted, std::int64_t number) {
    return leaveOutOfOlder(stores, accepted, number, true);
}

/// What the server may have applied keeps its key, as in the older queue.
bool SupersededEdits::leaveOutOfCurrent(const Stores& stores, const Transaction& accepted, std::int64_t number) {
    auto payload = ChangePayload::of(accepted);
    auto changes = stores.changeRegister();
    auto rows = stores.currentTransactions();
    auto queued = rows->getTransactionsOfRecords(
        {accepted.recordID}, kindsWhere([](auto kind) { return depndencyType(kind) == RecordDependency::Kind::edit; }));
    if (!queued || !payload) return queued.has_value();
    return std::all_of(queued->transactions.begin(), queued->transactions.end(), [&](auto& row) {
        auto id = std::to_string(row.id);
        auto entries = changes->entriesOf(ChangeQueue::current, {id});
        if (!entries) return false;
        if (entries->empty() || entries->front().number > number || !row.errorResponse) return true;
        auto& entry = entries->front();
        auto rest = withoutThoseOf(row.payload, *payload);
        // One without an answer is sent again by itself, and what comes after it waits.
        if (rest == row.payload || (entry.lastRefusal && entry.lastRefusal->isNoAnswer())) return true;
        if (isOnlyId(rest))
            return rows->deleteTransactionWithIds({row.id}) &&
                   changes->end(ChangeQueue::current, {{id, row.module.rawValue(), row.recordId}},
                                ChangeOutcome::merged) &&
                   (queued->transactions.size() > 1 ||
                    stores.currentTransactionRecords()->removeTransactionRecord(row.recordId));
        auto text = json::write(rest);
        if (!text || !rows->update({}, {{row.id, *text}})) return false;
        if (entry.sends == 0 || entry.mayHaveArrived()) return true;
        return changes->renewKey(entry.number) &&
               (!entry.lastRefusal || changes->noteRefusal(entry.number, *entry.lastRefusal, false));
    });
}

bool SupersededEdits::leaveOutBetweenQueues(const Stores& stores, const std::string& recordId) {
    auto older = stores.transactions()->getTransactions(recordId);
    auto current = stores.currentTransactions()->getTransactionsOfRecords(
        {recordId}, kindsWhere([](auto kind) { return depndencyType(kind) == RecordDependency::Kind::edit; }));
    if (!older || !current) return false;
    auto register_ = stores.changeRegister();
    bool areLeftOut = std::all_of(current->transactions.begin(), current->transactions.end(), [&](auto& edit) {
        auto entries = register_->entriesOf(ChangeQueue::current, {std::to_string(edit.id)});
        return entries && (entries->empty() || leaveOutOfOlder(stores, edit, entries->front().number, false));
    });
    return areLeftOut && std::all_of(older->transactions.begin(), older->transactions.end(), [&](auto& row) {
               if (row.operationType != TransactionType::editRecord) return true;
               auto entries = register_->entriesOf(ChangeQueue::older, {row.transactionID});
               return entries && (entries->empty() || leaveOutOfCurrent(stores, row, entries->front().number));
           });
}

}  // namespace tarvo
