#include "tarvobase/change_queues/ChangeCancellation.h"

#include <algorithm>
#include <map>

#include "platform/Text.h"
#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/database_layer/TransactionEnd.h"
#include "tarvobase/metadata/GetFieldListDM.h"
#include "tarvobase/record_changes/internal/EndedChanges.h"
#include "tarvobase/record_changes/internal/QueuedChange.h"
#include "tarvobase/transaction/ChangeNotices.h"
#include "tarvobase/transaction/TransactionWaiters.h"
#include "tarvobase/utils/TemporaryIds.h"

namespace tarvo {

namespace {

using Numbers = ChangeCancellation::Numbers;

Numbers numbersOf(const std::vector<SelectedChange>& changes) {
    Numbers numbers;
    for (auto& change : changes) numbers.push_back(change.entry().number);
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

bool createsRow(TransactionType type) {
    return type == TransactionType::addRecord || type == TransactionType::addAttachment;
}

bool contains(const Numbers& numbers, std::int64_t number) {
    return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
}

}  // namespace

std::string CancelRefusal::message() const {
    std::vector<std::string> texts;
    for (auto number : numbers) texts.push_back(std::to_string(number));
    auto list = (texts.size() == 1 ? "change " : "changes ") + text::join(texts, ", ");
    switch (reason) {
        case Reason::notQueued:
            return "there is no " + list;
        case Reason::sent:
            return "the server may have " + list + " already, so that only an answer can end this";
        case Reason::hasWaiters:
            return "the record is named by " + list + ", which must be cancelled with it";
        case Reason::neverSent:
            return "the record of " + list + " was never sent, and cannot be brought back";
        case Reason::notStored:
            break;
    }
    return "the database refuses the cancellation";
}

Result<Numbers, CancelRefusal> ChangeCancellation::cancel(const CancelRequest& request) const {
    Changes selected;
    std::optional<CancelRefusal> refusal;
    auto& database = parts_.stores.databaseAdapter();
    bool isStored = database && database->transaction("cancel changes", [&] {
        FieldListMemory memory;
        refusal = select(request.numbers, selected);
        if (refusal) return false;
        if (!addWaiters(selected)) return false;
        Numbers sent, waiters;
        for (auto& change : selected) {
            if (change.mayHaveArrived()) sent.push_back(change.entry().number);
            if (!contains(request.numbers, change.entry().number)) waiters.push_back(change.entry().number);
        }
        std::sort(waiters.begin(), waiters.end());
        if (!waiters.empty() && !request.withWaiters)
            refusal = CancelRefusal{CancelRefusal::Reason::hasWaiters, std::move(waiters)};
        if (!sent.empty()) refusal = CancelRefusal{CancelRefusal::Reason::sent, std::move(sent)};
        auto gone = request.revert ? deletesOfUnsentAdds(selected) : Numbers();
        if (!gone) return false;
        if (!gone->empty()) refusal = CancelRefusal{CancelRefusal::Reason::neverSent, *std::move(gone)};
        return !refusal && take(selected) && revert(selected, request.revert);
    });
    if (isStored) return numbersOf(selected);
    return refusal.value_or(CancelRefusal());
}

ChangeCancellation::Refusal ChangeCancellation::select(const Numbers& numbers, Changes& selected) const {
    auto entries = parts_.stores.changeRegister()->entriesWithNumbers(numbers);
    if (!entries) return CancelRefusal();
    for (auto& entry : *entries)
        if (auto change = SelectedChange::of(parts_.stores, entry)) selected.push_back(*std::move(change));
    Numbers missing;
    auto found = numbersOf(selected);
    for (auto number : numbers)
        if (!contains(found, number)) missing.push_back(number);
    if (missing.empty() && !numbers.empty()) return std::nullopt;
    return CancelRefusal{CancelRefusal::Reason::notQueued, std::move(missing)};
}

/// Returns the deletes whose record has no add any more. Brought back, it would stay here alone: nothing would ever
/// create it at the server. Returns nullopt if the queues cannot be read.
std::optional<Numbers> ChangeCancellation::deletesOfUnsentAdds(const Changes& selected) const {
    Numbers deletes;
    for (auto& change : selected) {
        if (!change.isDelete() || !isTemporaryRecordId(change.recordId())) continue;
        auto older = parts_.stores.transactions()->getTransactions(change.recordId());
        auto current = parts_.stores.currentTransactions()->getTransactionIdsWithRecordIds({change.recordId()},
                                                                                           kindsWhere(createsRecord));
        if (!older || !current) return std::nullopt;
        bool hasAdd = !current->empty() || std::any_of(older->transactions.begin(), older->transactions.end(),
                                                       [](auto& row) { return createsRow(row.operationType); });
        if (!hasAdd) deletes.push_back(change.entry().number);
    }
    std::sort(deletes.begin(), deletes.end());
    return deletes;
}

/// What hangs on an add may be an add itself, so the list grows while it is walked.
bool ChangeCancellation::addWaiters(Changes& selected) const {
    for (std::size_t i = 0; i < selected.size(); ++i) {
        auto change = selected[i];
        if (change.createsRecord() && !addWaitersOf(change, selected)) return false;
    }
    return true;
}

bool ChangeCancellation::addWaitersOf(const SelectedChange& creation, Changes& selected) const {
    auto& stores = parts_.stores;
    auto& id = creation.recordId();
    auto queued = stores.transactions()->getTransactions();
    auto current =
        stores.currentTransactions()->getTransactionIdsWithRecordIds({id}, kindsWhere([](auto) { return true; }));
    auto waiting = stores.transactionDependencies()->getTransactionDependencies(
        {creation.place()}, {TransactionDependency::Kind::lookupRecord});
    if (!queued || !current || !waiting) return false;
    for (auto& row : queued->transactions) {
        auto names = QueuedChange(row).temporaryIds;
        if (std::find(names.begin(), names.end(), id) == names.end()) continue;
        if (!add(ChangeQueue::older, row.transactionID, selected)) return false;
    }
    for (auto& dependency : *waiting) current->push_back(dependency.transactionId);
    return std::all_of(current->begin(), current->end(),
                       [&](auto waiter) { return add(ChangeQueue::current, std::to_string(waiter), selected); });
}

bool ChangeCancellation::add(ChangeQueue queue, const std::string& transactionId, Changes& selected) const {
    auto isSame = [&](auto& change) {
        return change.entry().queue == queue && change.entry().transactionId == transactionId;
    };
    if (std::any_of(selected.begin(), selected.end(), isSame)) return true;
    auto entry = parts_.stores.changeRegister()->enter(queue, transactionId);
    if (!entry) return false;
    auto change = SelectedChange::of(parts_.stores, *entry);
    // A row that cannot be read is never sent.
    if (change) selected.push_back(*std::move(change));
    return true;
}

bool ChangeCancellation::take(const Changes& changes) const {
    auto& stores = parts_.stores;
    if (!failOtherWaiters(changes)) return false;
    for (auto& change : changes) {
        if (change.current()) {
            if (!parts_.manager->deleteTransactionWithId(change.current()->id)) return false;
            continue;
        }
        if (!endOlderChanges(stores, {*change.older()}, ChangeOutcome::cancelled)) return false;
        afterCommit([cancelled = change.change()] { changeNotices::cancelled(cancelled); });
    }
    afterCommit(parts_.wake);
    return true;
}

/// What waits for an add and does not go with it fails first: without the add it would be free, and leave under a
/// temporary id.
bool ChangeCancellation::failOtherWaiters(const Changes& changes) const {
    TransactionWaiters waiters(parts_.stores);
    for (auto& creation : changes) {
        if (!creation.place()) continue;
        auto left = parts_.stores.transactionDependencies()->getTransactionDependencies(
            {creation.place()}, {TransactionDependency::Kind::lookupRecord});
        if (!left) return false;
        bool isLeft = std::any_of(left->begin(), left->end(), [&](auto& dependency) {
            return std::none_of(changes.begin(), changes.end(), [&](auto& change) {
                return change.current() && change.current()->id == dependency.transactionId;
            });
        });
        if (isLeft && !waiters.fail(creation.place(), ErrorResponse::dependingTransactionFailed())) return false;
    }
    return true;
}

bool ChangeCancellation::revert(const Changes& changes, bool revert) const {
    RecordReversion reversion(parts_.stores, parts_.records);
    std::map<RecordReversion::RecordOf, std::vector<const SelectedChange*>> edits;
    std::set<std::string> goneIds;
    for (auto& change : changes) {
        if (change.createsRecord()) goneIds.insert(change.recordId());
        if (change.isEdit()) edits[{change.moduleName(), change.recordId()}].push_back(&change);
    }
    for (auto& [record, its] : edits)
        if (!goneIds.contains(record.second) &&
            !reversion.revertEdits(record.first, record.second, its, revert, goneIds))
            return false;
    for (auto& change : changes) {
        if (change.createsRecord()) {
            if (!reversion.removeAdded(change)) return false;
            afterCommit([remove = parts_.removeSound, id = change.recordId()] { remove(id); });
        }
        if (change.isDelete() && revert && !goneIds.contains(change.recordId()) && !reversion.restore(change))
            return false;
        if (!reversion.tidy(change.recordId())) return false;
    }
    for (auto& [moduleName, recordId] : reversion.outdated())
        afterCommit(
            [fetch = parts_.fetch, moduleName = moduleName, recordId = recordId] { fetch(moduleName, recordId); });
    return true;
}

}  // namespace tarvo
