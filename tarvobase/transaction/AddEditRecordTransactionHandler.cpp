#include "tarvobase/transaction/AddEditRecordTransactionHandler.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>

#include "platform/Log.h"
#include "platform/Text.h"
#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/network_layer/Parser.h"
#include "tarvobase/records/wire/RecordConversion.h"
#include "tarvobase/utils/TemporaryIds.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"

namespace tarvo {

namespace {

using TransactionKind = NTransaction::Kind;

const std::vector<TransactionKind> mergeableKinds{TransactionKind::addRecord, TransactionKind::editRecord,
                                                  TransactionKind::addTextNote, TransactionKind::addVoiceNote,
                                                  TransactionKind::editNote};

bool isMergeableAdd(const NTransaction& transaction) {
    return transaction.kind != TransactionKind::editRecord && transaction.kind != TransactionKind::editNote;
}

void logPayload(const char* text) { platform::log(platform::LogLevel::warning, "transaction", text); }

/// Returns whether a column of a record goes into its payload.
bool isInPayload(const std::string& column, const Record& record, const FieldIdentifier& naming) {
    if (!record.hasColumn(column) || column == naming.constant->modifiedTime || column == naming.constant->modifiedBy)
        return false;
    return column != record.identifierColumn() || !isTemporaryRecordId(record.recordId());
}

Value payloadValue(FieldDataType type, const ValueView& stored) {
    if (type != FieldDataType::bigInt || !stored.asText()) return sentValue(type, stored);
    return Value(text::toInteger(*stored.asText()));
}

/// Returns the newer rows, each over the older one of its id.
ValueList mergedRows(const std::vector<ValueMap>& older, const std::vector<ValueMap>& newer) {
    constexpr auto id = RecordConstants::FieldAPINames::Id;
    std::map<std::string, const ValueMap*> known;
    for (auto& row : older) {
        if (auto rowId = row.valueOf(id); rowId.asText())
            known[*rowId.asText()] = &row;
        else
            logPayload("subform `id` not found");
    }
    ValueList rows;
    for (auto& row : newer) {
        auto rowId = row.valueOf(id);
        auto found = rowId.asText() ? known.find(*rowId.asText()) : known.end();
        auto merged = found == known.end() ? ValueMap() : *found->second;
        merged.merge(row);
        rows.push_back(Value(std::move(merged)));
    }
    return rows;
}

using WaitsFor = std::multimap<std::int64_t, std::int64_t>;

/// Returns whether a transaction of a group waits for one of the group through others.
bool waitsThroughOthers(std::int64_t waiting, const std::set<std::int64_t>& group, const WaitsFor& waitsFor) {
    std::set<std::int64_t> others;
    std::vector<std::int64_t> pending{waiting};
    while (!pending.empty()) {
        auto id = pending.back();
        pending.pop_back();
        auto [begin, end] = waitsFor.equal_range(id);
        for (auto one = begin; one != end; ++one) {
            bool isOfGroup = group.contains(one->second);
            if (isOfGroup && id != waiting) return true;
            if (!isOfGroup && others.insert(one->second).second) pending.push_back(one->second);
        }
    }
    return false;
}

}  // namespace

ValueMap AddEditRecordTransactionHandler::getPayload(const Record& record, const FieldList& metadata,
                                                     bool ignoreNullAndEmpty) {
    ValueMap payload;
    for (auto [column, field] : metadata.orderedFields()) {
        if (!isInPayload(column, record, metadata.naming())) continue;
        auto value = payloadValue(field.fieldType, record[column]);
        if (ignoreNullAndEmpty && (value.isNull() || value == Value(""))) continue;
        payload.set(field.fieldAPIName, std::move(value));
    }
    return payload;
}

std::vector<std::string> AddEditRecordTransactionHandler::getLookupRecords(const ValueMap& payload,
                                                                           const FieldList& metadata) {
    std::vector<std::string> records;
    for (auto [column, field] : metadata.orderedFields()) {
        if (field.fieldType != FieldDataType::lookup) continue;
        auto value = payload.valueOf(field.fieldAPIName);
        if (auto id = value.asText())
            records.push_back(*id);
        else if (!value.isNull())
            logPayload("Could not get lookup record id. Could not cast value to `String`");
    }
    return records;
}

ValueMap AddEditRecordTransactionHandler::merge(const std::vector<ValueMap>& payloads, const FieldList& metadata) {
    std::set<std::string> subforms;
    for (auto [column, field] : metadata.orderedFields())
        if (isSubform(field.fieldType)) subforms.insert(field.fieldAPIName);
    ValueMap result;
    for (auto& payload : payloads)
        for (auto& [key, value] : payload) {
            auto older = subforms.contains(key) ? listOfMaps(result.find(key)) : std::nullopt;
            auto newer = older ? listOfMaps(&value) : std::nullopt;
            result.set(key, newer ? Value(mergedRows(*older, *newer)) : value);
        }
    return result;
}

bool AddEditRecordTransactionHandler::mergeTransaction(const NTransaction& transaction, const FieldList& metadata) {
    auto& database = stores_.databaseAdapter();
    return database && database->transaction("merge the changes of a record", [&] {
        auto group = groupOf(transaction);
        return group && (group->empty() || fold(transaction, *group, metadata, Attempts::beginAgain));
    });
}

bool AddEditRecordTransactionHandler::handleError(const ErrorResponse&, const NTransaction& transaction,
                                                  const FieldList& metadata) {
    auto& database = stores_.databaseAdapter();
    return database && database->transaction("retry a refused change", [&] {
        if (transaction.kind != TransactionKind::addRecord) return retry(transaction, metadata);
        auto isDestroyed = transactionManager_.isCreateAndDestoryTransaction(
            transaction.recordId, TransactionKind::addRecord, TransactionKind::deleteRecord);
        if (!isDestroyed) return false;
        return *isDestroyed ? transactionManager_.deleteTransactionWithRecordId(transaction.recordId)
                            : retry(transaction, metadata);
    });
}

/// An edit that is merged into a queued add is an add, or the record would never be created. The attempts stay: with
/// all of them again, a change that the server refuses would be sent for ever.
bool AddEditRecordTransactionHandler::retry(const NTransaction& refused, const FieldList& metadata) {
    auto group = groupOf(refused);
    if (!group || group->empty()) return group.has_value();
    auto asking = refused;
    auto add = std::find_if(group->begin(), group->end(), isMergeableAdd);
    if (add != group->end()) asking.kind = add->kind;
    return fold(asking, *group, metadata, Attempts::keep);
}

/// Returns the transactions that are merged, oldest first, or nullopt if the queue cannot be read. One that is on its
/// way is not merged, since its answer counts for it alone, and neither are those after it. A group also ends where
/// one of its transactions would wait for another through one of another record: the survivor and that one would wait
/// for each other.
std::optional<AddEditRecordTransactionHandler::Group> AddEditRecordTransactionHandler::groupOf(
    const NTransaction& transaction) const {
    auto limit = transaction.mergeCount < maxSingleMerge_ ? std::optional<std::int64_t>(2) : std::nullopt;
    auto group = transactionManager_.getTransactions(transaction.recordId, mergeableKinds, limit);
    if (!group) return std::nullopt;
    group->erase(std::find_if(group->begin(), group->end(),
                              [](auto& one) { return one.status == NTransaction::Status::syncing(); }),
                 group->end());
    if (group->size() < 2) return group;
    auto dependencies = stores_.transactionDependencies()->getTransactionDependencies();
    if (!dependencies) return std::nullopt;
    WaitsFor waitsFor;
    for (auto& one : *dependencies) waitsFor.emplace(one.transactionId, one.dependentTransaction);
    std::set<std::int64_t> ids{group->front().id};
    auto isApart = [&](auto& next) {
        ids.insert(next.id);
        return std::any_of(ids.begin(), ids.end(), [&](auto id) { return waitsThroughOthers(id, ids, waitsFor); });
    };
    group->erase(std::find_if(group->begin() + 1, group->end(), isApart), group->end());
    return group;
}

/// Puts one transaction in place of a group. Returns whether it is stored.
bool AddEditRecordTransactionHandler::fold(const NTransaction& transaction, const Group& group,
                                           const FieldList& metadata, Attempts attempts) {
    std::vector<ValueMap> payloads;
    TransactionManagerContract::Ids merged;
    for (auto& one : group) {
        payloads.push_back(one.payload);
        merged.push_back(one.id);
    }
    auto& last = group.back();
    NTransaction survivor{.id = last.id,
                          .recordId = last.recordId,
                          .module = last.module,
                          .kind = transaction.kind,
                          .payload = merge(payloads, metadata),
                          .mergeCount = transaction.mergeCount + static_cast<std::int64_t>(group.size()) - 1,
                          .syncAttempt = last.syncAttempt};
    auto lookups = getLookupRecords(survivor.payload, metadata);
    return transactionManager_.addMergedTransaction(survivor, lookups, merged, attempts);
}

}  // namespace tarvo
