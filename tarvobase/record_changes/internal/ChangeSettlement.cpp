#include "tarvobase/record_changes/internal/ChangeSettlement.h"

#include <algorithm>
#include <map>

#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/database_layer/TransactionEnd.h"
#include "tarvobase/metadata/GetFieldListDM.h"
#include "tarvobase/notification/BrenNotificationCenter.h"
#include "tarvobase/notification/RecordChangedObserver.h"
#include "tarvobase/record_changes/internal/ChangePayload.h"
#include "tarvobase/record_changes/internal/QueuedChange.h"
#include "tarvobase/record_changes/internal/RecordSides.h"
#include "tarvobase/record_changes/internal/SupersededEdits.h"
#include "tarvobase/records/SharedActivities.h"
#include "tarvobase/records/sql/DeletedRecords.h"
#include "tarvobase/transaction/ChangeNotices.h"

namespace tarvo {

namespace {

using Outcome = ChangeAnswer::Outcome;
using T = TransactionType;

bool isAdd(const Transaction& sent) {
    return sent.operationType == T::addRecord || sent.operationType == T::addAttachment;
}

ErrorResponse refusalOf(const ChangeAnswer& answer) {
    bool isRefusal = answer.outcome == Outcome::refused && answer.refusal;
    return isRefusal ? *answer.refusal : ErrorResponse::parsingFailed();
}

/// Returns whether the answer has the record as it is now. An edit that is sent again is answered as it was at first: a
/// later edit may have been accepted since, and would seem to be undone. The record of an upload is not an
/// attachment's.
bool hasServersRecord(const AnsweredChange& change) {
    auto type = change.sent.operationType;
    bool isRepeatedEdit = type == T::editRecord && change.entry.sends > 1;
    return change.answer.record && !isRepeatedEdit && type != T::addAttachment && type != T::deleteRecord;
}

}  // namespace

ChangeSettlement::ChangeSettlement(const Stores& stores, std::shared_ptr<RecordPersistanceDelegate> records,
                                   Fetch fetch, Wake wake)
    : stores_(stores),
      records_(std::move(records)),
      replacement_(stores),
      fetch_(std::move(fetch)),
      wake_(std::move(wake)),
      waiters_(stores) {}

bool ChangeSettlement::settle(const std::vector<AnsweredChange>& changes) const {
    auto& database = stores_.databaseAdapter();
    // A round that is under way now may end between the commit and a later look.
    for (auto& change : changes)
        if (change.answer.outcome == Outcome::accepted)
            fetch_(change.sent.moduleName, change.sent.recordID, RecordRefetch::Reason::acceptance);
    std::set<std::string> queued;
    bool areAwaited = false;
    bool areStored = database && database->transaction("answers to changes", [&] {
        FieldListMemory memory;
        areAwaited = areOfCurrentQueue(changes);
        return readQueued(changes, queued) && store(changes) && (!areAwaited || leaveOutOfCurrent(changes));
    });
    if (!areStored) return false;
    if (areAwaited) wakeCurrentQueue();
    for (auto& change : changes) {
        if (change.answer.outcome == Outcome::noAnswer) continue;
        // The delete that has dropped a change meanwhile has notified of it.
        if (queued.contains(change.sent.transactionID)) notify(change.sent, change.entry, change.answer);
        follow(change);
    }
    return true;
}

/// Reads the ids of those changes that are still in the queue.
bool ChangeSettlement::readQueued(const std::vector<AnsweredChange>& changes, std::set<std::string>& queued) const {
    std::vector<std::string> ids;
    for (auto& change : changes) ids.push_back(change.sent.transactionID);
    auto found = stores_.transactions()->getTransactionsWithIds(ids);
    if (!found) return false;
    for (auto& row : found->transactions) queued.insert(row.transactionID);
    return true;
}

bool ChangeSettlement::store(const std::vector<AnsweredChange>& changes) const {
    std::vector<std::string> silent;
    std::vector<std::int64_t> unsent;
    std::vector<const AnsweredChange*> accepted;
    for (auto& change : changes) {
        switch (change.answer.outcome) {
            case Outcome::noAnswer:
                silent.push_back(change.sent.transactionID);
                if (change.answer.isUnsent) unsent.push_back(change.entry.number);
                break;
            case Outcome::accepted:
                accepted.push_back(&change);
                break;
            case Outcome::refused:
            case Outcome::unreadable:
                if (!storeRefused(change.sent, change.entry, change.answer)) return false;
                break;
        }
    }
    return stores_.transactions()->makeReady(silent) &&
           (unsent.empty() || stores_.changeRegister()->noteUnsent(unsent)) && storeAccepted(accepted);
}

/// A delete may have dropped the row of an edit meanwhile. The record has no row here then, and gets none.
bool ChangeSettlement::storeAccepted(const std::vector<const AnsweredChange*>& changes) const {
    std::vector<std::string> ids;
    std::vector<EndedChange> ended;
    for (auto change : changes) {
        auto& sent = change->sent;
        ids.push_back(sent.transactionID);
        ended.push_back({sent.transactionID, sent.moduleName, isAdd(sent) ? change->answer.recordId : sent.recordID});
    }
    if (!stores_.transactions()->removeTransactionsWithIds(ids) ||
        !stores_.changeRegister()->end(ChangeQueue::older, ended, ChangeOutcome::accepted))
        return false;
    std::map<std::string, std::vector<ValueMap>> records;  // by module
    for (auto change : changes) {
        auto& sent = change->sent;
        if (isAdd(sent) && !replaceId(sent, change->entry, change->answer.recordId)) return false;
        if (sent.operationType == T::deleteRecord &&
            !(removeDeletedRecords(stores_.databaseAdapter(), *records_, sent.moduleName, {sent.recordID}) &&
              RecordSides::remove(stores_, sent.recordID)))
            return false;
        if (hasServersRecord(*change)) records[sent.moduleName].push_back(*change->answer.record);
    }
    for (auto& [moduleName, ofModule] : records)
        if (!storeServerRecords(moduleName, ofModule)) return false;
    return tidyRest(changes);
}

/// Most records have no other change that waits, and their two sides go with one statement.
bool ChangeSettlement::tidyRest(const std::vector<const AnsweredChange*>& changes) const {
    std::map<std::string, const AnsweredChange*> byRecord;
    std::vector<std::string> recordIds;
    for (auto change : changes) {
        auto& sent = change->sent;
        if (sent.operationType == T::deleteRecord) continue;
        recordIds.push_back(isAdd(sent) ? change->answer.recordId : sent.recordID);
        byRecord[recordIds.back()] = change;
    }
    if (recordIds.empty()) return true;
    auto left = stores_.transactions()->getTransactionsOfRecords(recordIds);
    if (!left) return false;
    std::set<std::string> unsettled;
    for (auto& row : left->transactions) unsettled.insert(row.recordID);
    std::erase_if(recordIds, [&](auto& id) { return unsettled.contains(id); });
    return stores_.transactionRecords()->removeTransactionRecords(recordIds) &&
           std::all_of(unsettled.begin(), unsettled.end(), [&](auto& id) { return tidyRest(*byRecord[id], id); });
}

/// What waits for the record in the current queue names it by its id, and may go.
bool ChangeSettlement::replaceId(const Transaction& sent, const ChangeEntry& entry, const std::string& newId) const {
    if (!replacement_.replace(sent.moduleName, sent.recordID, newId)) return false;
    if (wake_) afterCommit(wake_);
    auto number = entry.transactionNumber;
    return waiters_.replaceRecordIdentifiers({{sent.recordID, newId}}, number) && (!number || waiters_.release(number));
}

/// An answer need not have all fields, so that it goes over the local row instead of in its place. A record without a
/// row was deleted here, or never stored, and gets none.
bool ChangeSettlement::storeServerRecords(const std::string& moduleName, const std::vector<ValueMap>& records) const {
    // Without fields no column is known, and the module has no rows that could change.
    auto fields = FieldListAssembler::getFieldListDM(stores_.databaseAdapter());
    if (!fields->getFieldsWithoutPicklists(moduleName, std::nullopt)) return true;
    for (auto& module : SharedActivities::modulesOf(*stores_.databaseAdapter(), moduleName))
        // The shared table is written as far as its fields are known. A write that fails undoes the whole answer.
        if (!records_->modifyRecord(module, records) && module == moduleName) return false;
    return true;
}

/// What failed before must not undo an accepted edit when it is tried again. The two sides of a record stay while
/// changes of it are left; their server side is then what the answer made of it.
bool ChangeSettlement::tidyRest(const AnsweredChange& change, const std::string& recordId) const {
    auto& accepted = change.sent;
    auto sides = stores_.transactionRecords();
    auto left = stores_.transactions()->getTransactions(recordId);
    if (left && !left->transactions.empty() && accepted.operationType == T::editRecord) {
        if (!SupersededEdits::leaveOutAccepted(stores_, accepted, left->transactions)) return false;
        left = stores_.transactions()->getTransactions(recordId);
    }
    if (!left) return false;
    if (left->transactions.empty()) return sides->removeTransactionRecord(recordId);
    auto found = sides->getTransactionRecord(recordId);
    if (!found || !found.value()) return true;
    auto wire = hasServersRecord(change) ? change.answer.record : ChangePayload::of(accepted);
    auto fields = FieldListAssembler::getFieldListDM(stores_.databaseAdapter())
                      ->getFieldsWithoutPicklists(accepted.moduleName, std::nullopt);
    if (!wire || !fields) return true;
    auto record = *found.value();
    RecordSides::layOver(record.serverData, *wire, fields.value());
    return sides->storeTransactionRecordPersistance(record);
}

bool ChangeSettlement::storeRefused(const Transaction& sent, const ChangeEntry& entry,
                                    const ChangeAnswer& answer) const {
    bool isOpen = answer.isOfWholeRequest && entry.sends > 1;
    bool mayBeApplied = answer.outcome == Outcome::unreadable || isOpen;
    auto refusal = refusalOf(answer);
    auto number = entry.transactionNumber;
    return (!number || waiters_.fail(number, refusal)) &&
           stores_.transactions()->updateTransaciton(sent.transactionID, std::nullopt, std::nullopt,
                                                     std::string(Transaction::State::error)) &&
           stores_.changeRegister()->noteRefusal(entry.number, refusal, mayBeApplied);
}

void ChangeSettlement::notify(const Transaction& sent, const ChangeEntry& entry, const ChangeAnswer& answer) const {
    auto change = Change::of(sent, entry);
    if (answer.outcome == Outcome::accepted) {
        if (isAdd(sent)) change.recordId = answer.recordId;
        changeNotices::accepted(std::move(change), isAdd(sent) ? std::optional(sent.recordID) : std::nullopt);
        return;
    }
    changeNotices::refused(std::move(change), refusalOf(answer));
}

/// Returns whether another change of the record is about to be answered. What follows that answer serves this one.
bool ChangeSettlement::goesOn(const std::string& recordId) const {
    auto left = stores_.transactions()->getTransactions(recordId);
    return left && std::any_of(left->transactions.begin(), left->transactions.end(),
                               [](auto& row) { return !QueuedChange(row).hasFailed(); });
}

/// Returns whether the current queue has changes of the same records, which the older queue may have held up.
bool ChangeSettlement::areOfCurrentQueue(const std::vector<AnsweredChange>& changes) const {
    std::vector<std::string> recordIds;
    for (auto& change : changes)
        if (change.answer.outcome != Outcome::noAnswer) recordIds.push_back(change.sent.recordID);
    auto others =
        stores_.currentTransactions()->getTransactionIdsWithRecordIds(recordIds, kindsWhere([](auto) { return true; }));
    return !others || !others->empty();
}

bool ChangeSettlement::leaveOutOfCurrent(const std::vector<AnsweredChange>& changes) const {
    return std::all_of(changes.begin(), changes.end(), [&](auto& change) {
        bool isAccepted = change.answer.outcome == Outcome::accepted && change.sent.operationType == T::editRecord;
        return !isAccepted || SupersededEdits::leaveOutOfCurrent(stores_, change.sent, change.entry.number);
    });
}

/// What comes after the commit.
void ChangeSettlement::follow(const AnsweredChange& change) const {
    auto& sent = change.sent;
    auto& answer = change.answer;
    bool isAccepted = answer.outcome == Outcome::accepted;
    if (isAccepted && sent.operationType == T::addRecord)
        BrenNotificationCenter::shared().notify<RecordChangedObserver>(
            true, [module = sent.moduleName, former = sent.recordID, now = answer.recordId](auto& observer) {
                observer.recordUpdated(module, former, now);
            });
    bool isRecord = sent.operationType == T::addRecord || sent.operationType == T::editRecord;
    auto& recordId = sent.operationType == T::addRecord ? answer.recordId : sent.recordID;
    if (isAccepted && isRecord && !hasServersRecord(change) && !goesOn(recordId))
        fetch_(sent.moduleName, recordId, RecordRefetch::Reason::bareAcceptance);
    if (!isAccepted && sent.operationType == T::deleteRecord)
        fetch_(sent.moduleName, sent.recordID, RecordRefetch::Reason::refusedDelete);
}

}  // namespace tarvo
