#include "tarvobase/record_changes/internal/ChangeTurns.h"

#include <algorithm>

namespace tarvo {

ChangeTurns::ChangeTurns(const std::vector<QueuedChange>& queue, const CurrentQueue& current) : current_(current) {
    for (auto& change : queue)
        if (change.transaction.operationType == TransactionType::addRecord)
            adds_[change.transaction.recordID] = &change;
}

std::optional<ChangeTurns::CurrentQueue> ChangeTurns::currentQueueFor(const Stores& stores,
                                                                      const std::vector<QueuedChange>& queue) {
    CurrentQueue current;
    if (queue.empty()) return current;
    auto pairs = stores.recordOrder().pairs();
    if (!pairs) return std::nullopt;
    for (auto& pair : *pairs)
        if (!pair.isOlderFirst) current.earlier.emplace(pair.olderId, std::to_string(pair.currentId));
    std::vector<std::string> named;
    for (auto& change : queue) named.insert(named.end(), change.temporaryIds.begin(), change.temporaryIds.end());
    if (named.empty()) return current;
    auto creating =
        stores.currentTransactions()->getTransactionsWithRecordIds(named, kindsWhere(createsRecord), std::nullopt);
    if (!creating) return std::nullopt;
    std::map<std::string, Creation*> failed;
    for (auto& each : *creating) {
        auto& creation = current.creations[each.recordId] = {std::to_string(each.id), each.errorResponse.has_value()};
        if (creation.hasFailed) failed[creation.transactionId] = &creation;
    }
    if (failed.empty()) return current;
    std::vector<std::string> ids;
    for (auto& [id, creation] : failed) ids.push_back(id);
    auto entries = stores.changeRegister()->entriesOf(ChangeQueue::current, ids);
    if (!entries) return std::nullopt;
    // One without an answer is sent again by itself.
    for (auto& entry : *entries)
        if (entry.lastRefusal && entry.lastRefusal->isNoAnswer()) failed[entry.transactionId]->hasFailed = false;
    return current;
}

bool ChangeTurns::isSendable(TransactionType type) {
    return type == TransactionType::addRecord || type == TransactionType::editRecord ||
           type == TransactionType::deleteRecord || type == TransactionType::addAttachment;
}

const QueuedChange* ChangeTurns::addOf(const std::string& recordId) const {
    auto found = adds_.find(recordId);
    return found == adds_.end() ? nullptr : found->second;
}

ChangeTurns::Judgement ChangeTurns::judge(const QueuedChange& change) {
    auto& row = change.transaction;
    if (change.isReady() && !isSendable(row.operationType)) return {Turn::notSendable, {}};
    Judgement judgement = change.isReady() ? judgeReady(change) : Judgement();
    // A failed edit or delete holds nothing up, and what names the record of a failed add finds that by itself.
    bool holds =
        (change.isSending() && !change.hasFailed()) || judgement.turn == Turn::send || judgement.turn == Turn::wait;
    if (holds) holders_[row.recordID] = row.transactionID;
    return judgement;
}

ChangeTurns::Judgement ChangeTurns::judgeReady(const QueuedChange& change) const {
    auto& row = change.transaction;
    Judgement judgement{Turn::send, {}};
    auto waitFor = [&](const std::string& transactionId) {
        judgement.turn = Turn::wait;
        if (std::find(judgement.waitsFor.begin(), judgement.waitsFor.end(), transactionId) == judgement.waitsFor.end())
            judgement.waitsFor.push_back(transactionId);
    };
    if (auto holder = holders_.find(row.recordID); holder != holders_.end()) waitFor(holder->second);
    auto [earlier, end] = current_.earlier.equal_range(row.transactionID);
    for (; earlier != end; ++earlier) waitFor(earlier->second);
    for (auto& id : change.temporaryIds) {
        auto add = addOf(id);
        if (add && !add->hasFailed()) {
            waitFor(add->transaction.transactionID);
            continue;
        }
        auto creation = current_.creations.find(id);
        if (creation != current_.creations.end() && !creation->second.hasFailed) {
            waitFor(creation->second.transactionId);
            continue;
        }
        // Without an add that arrives, the server never has the record: there is nothing to delete, and nothing to
        // name.
        bool isOwnDelete = id == row.recordID && row.operationType == TransactionType::deleteRecord;
        return {isOwnDelete ? Turn::drop : Turn::fail, {}};
    }
    return judgement;
}

}  // namespace tarvo
