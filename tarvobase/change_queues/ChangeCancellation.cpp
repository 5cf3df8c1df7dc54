#include "tarvobase/change_queues/ChangeCancellation.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

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
        std::set<std::int64_t> wanted(request.numbers.begin(), request.numbers.end());
        for (auto& change : selected) {
            if (change.mayHaveArrived()) sent.push_back(change.entry().number);
            if (!wanted.contains(change.entry().number)) waiters.push_back(change.entry().number);
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
        if (!std::binary_search(found.begin(), found.end(), number)) missing.push_back(number);
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

/// The changes that go, and those of both queues that name records by their temporary ids.
struct ChangeCancellation::Waiters {
    using Key = std::pair<ChangeQueue, std::string>;
    std::set<Key> taken;
    std::optional<std::multimap<std::string, std::string>> older;  // row by temporary id; read when it is asked for
};

/// What hangs on an add may be an add itself, so the list grows while it is walked.
bool ChangeCancellation::addWaiters(Changes& selected) const {
    Waiters waiters;
    for (auto& change : selected) waiters.taken.insert({change.entry().queue, change.entry().transactionId});
    for (std::size_t i = 0; i < selected.size(); ++i) {
        auto change = selected[i];
        if (change.createsRecord() && !addWaitersOf(change, waiters, selected)) return false;
    }
    return true;
}

bool ChangeCancellation::addWaitersOf(const SelectedChange& creation, Waiters& waiters, Changes& selected) const {
    auto& stores = parts_.stores;
    auto& id = creation.recordId();
    auto current =
        stores.currentTransactions()->getTransactionIdsWithRecordIds({id}, kindsWhere([](auto) { return true; }));
    auto waiting = stores.transactionDependencies()->getTransactionDependencies(
        {creation.place()}, {TransactionDependency::Kind::lookupRecord});
    if (!current || !waiting || !readOlder(waiters)) return false;
    auto [row, end] = waiters.older->equal_range(id);
    for (; row != end; ++row)
        if (!add(ChangeQueue::older, row->second, waiters, selected)) return false;
    for (auto& dependency : *waiting) current->push_back(dependency.transactionId);
    return std::all_of(current->begin(), current->end(), [&](auto waiter) {
        return add(ChangeQueue::current, std::to_string(waiter), waiters, selected);
    });
}

bool ChangeCancellation::readOlder(Waiters& waiters) const {
    if (waiters.older) return true;
    auto queued = parts_.stores.transactions()->getTransactions();
    if (!queued) return false;
    FreeText freeText(parts_.stores);
    waiters.older.emplace();
    for (auto& row : queued->transactions)
        for (auto& name : QueuedChange(row, freeText).temporaryIds) waiters.older->emplace(name, row.transactionID);
    return true;
}

bool ChangeCancellation::add(ChangeQueue queue, const std::string& transactionId, Waiters& waiters,
                             Changes& selected) const {
    if (!waiters.taken.insert({queue, transactionId}).second) return true;
    auto entry = parts_.stores.changeRegister()->enter(queue, transactionId);
    if (!entry) return false;
    auto change = SelectedChange::of(parts_.stores, *entry);
    // A row that cannot be read is never sent.
    if (change) selected.push_back(*std::move(change));
    return true;
}

bool ChangeCancellation::take(const Changes& changes) const {
    if (!failOtherWaiters(changes)) return false;
    TransactionManagerContract::Ids current;
    std::vector<Transaction> older;
    for (auto& change : changes) {
        if (change.current()) {
            current.push_back(change.current()->id);
            continue;
        }
        older.push_back(*change.older());
        afterCommit([cancelled = change.change()] { changeNotices::cancelled(cancelled); });
    }
    afterCommit(parts_.wake);
    return (current.empty() || parts_.manager->deleteTransactionWithIds(current)) &&
           (older.empty() || endOlderChanges(parts_.stores, older, ChangeOutcome::cancelled));
}

/// What waits for an add and does not go with it fails first: without the add it would be free, and leave under a
/// temporary id.
bool ChangeCancellation::failOtherWaiters(const Changes& changes) const {
    TransactionWaiters waiters(parts_.stores);
    std::set<std::int64_t> going;
    for (auto& change : changes)
        if (change.current()) going.insert(change.current()->id);
    for (auto& creation : changes) {
        if (!creation.place()) continue;
        auto left = parts_.stores.transactionDependencies()->getTransactionDependencies(
            {creation.place()}, {TransactionDependency::Kind::lookupRecord});
        if (!left) return false;
        bool isLeft = std::any_of(left->begin(), left->end(),
                                  [&](auto& dependency) { return !going.contains(dependency.transactionId); });
        if (isLeft && !waiters.fail(creation.place(), ErrorResponse::dependingTransactionFailed())) return false;
    }
    return true;
}

bool ChangeCancellation::revert(const Changes& changes, bool revert) const {
    RecordReversion reversion(parts_.stores, parts_.records);
    std::map<RecordReversion::RecordOf, std::vector<const SelectedChange*>> edits;
    std::set<std::string> goneIds, recordIds;
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
        recordIds.insert(change.recordId());
    }
    if (!std::all_of(recordIds.begin(), recordIds.end(), [&](auto& id) { return reversion.tidy(id); })) return false;
    for (auto& [moduleName, recordId] : reversion.outdated())
        afterCommit(
            [fetch = parts_.fetch, moduleName = moduleName, recordId = recordId] { fetch(moduleName, recordId); });
    return true;
}

}  // namespace tarvo
