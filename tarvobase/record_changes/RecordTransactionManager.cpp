#include "tarvobase/record_changes/RecordTransactionManager.h"

#include <algorithm>

#include "platform/Clock.h"
#include "platform/Json.h"
#include "platform/Random.h"
#include "tarvobase/database_layer/TransactionEnd.h"
#include "tarvobase/record_changes/internal/ChangePayload.h"
#include "tarvobase/record_changes/internal/DependentFailures.h"
#include "tarvobase/record_changes/internal/EndedChanges.h"
#include "tarvobase/record_changes/internal/QueuedChange.h"
#include "tarvobase/record_changes/wire/NetworkParamConstant.h"
#include "tarvobase/transaction/ChangeNotices.h"

namespace tarvo {

namespace {

using Keys = NetworkParamConstant;

ValueMap parametersOf(const Module& module) {
    ValueMap parameters;
    parameters.set(Keys::AddEditRecord::module, module.moduleName);
    parameters.set(Keys::AddEditRecord::moduleAPI, module.apiName);
    return parameters;
}

/// Lays an edit over the payload of an add.
void mergeEdit(ValueMap& add, const ValueMap& edit) {
    for (auto& entry : edit) {
        if (entry.value.isNull() || entry.name == RecordConstants::FieldAPINames::Id)
            add.remove(entry.name);
        else
            add.set(entry.name, entry.value);
    }
}

bool isRefusedAdd(const Stores& stores, const Transaction& row) {
    if (row.operationType != TransactionType::addRecord || !QueuedChange(row).hasFailed()) return false;
    auto entries = stores.changeRegister()->entriesOf(ChangeQueue::older, {row.transactionID});
    return entries && !entries->empty() && entries->front().isKnownToBeRefused();
}

}  // namespace

RecordTransactionManager::RecordTransactionManager(const Stores& stores, std::function<void()> wake)
    : stores_(stores),
      fieldLists_(FieldListAssembler::getFieldListDM(stores.databaseAdapter())),
      wake_(std::move(wake)),
      transactionIds_(stores) {}

RecordTransactionManagerProtocol::Queued RecordTransactionManager::addRecord(const Record& record,
                                                                             const Module& module) {
    return addEdit(record, module, TransactionType::addRecord);
}

RecordTransactionManagerProtocol::Queued RecordTransactionManager::editRecord(const Record& record,
                                                                              const Module& module) {
    return addEdit(record, module, TransactionType::editRecord);
}

RecordTransactionManagerProtocol::Queued RecordTransactionManager::addEdit(const Record& record, const Module& module,
                                                                           TransactionType type) {
    auto errors = delegate.lock();
    auto fields = fieldLists_->getFieldsWithoutPicklists(module.moduleName, record.columnNames());
    if (!fields) {
        if (errors) errors->unableToGetMetadata(module.moduleName, "");
        return std::nullopt;
    }
    auto payload = ChangePayload::of(record, fields.value(), type);
    std::int64_t transactionNumber = 0;
    if (type == TransactionType::editRecord) {
        bool isStored = true;
        auto refused = takeRefusedAdd(record.recordId(), module, isStored);
        if (!isStored) return std::nullopt;
        if (refused) {
            type = TransactionType::addRecord;
            mergeEdit(refused->payload, payload);
            payload = std::move(refused->payload);
            transactionNumber = refused->transactionNumber;
        }
    }
    auto body = ChangePayload::body(payload);
    if (!body) {
        if (errors) errors->networkParamsError();
        return std::nullopt;
    }
    return addTransaction({.recordID = record.recordId(),
                           .moduleName = module.moduleName,
                           .operationType = type,
                           .dataJSON = *std::move(body)},
                          parametersOf(module), transactionNumber);
}

/// Takes the refused add of a record out of the queue and returns its payload. Edits that waited for it go with it:
/// sent after the new add they would undo what is newer. What else failed for its sake is ready again.
std::optional<RecordTransactionManager::RefusedAdd> RecordTransactionManager::takeRefusedAdd(
    const std::string& recordId, const Module& module, bool& isStored) {
    auto changes = stores_.changeRegister();
    auto queued = stores_.transactions()->getTransactions(recordId);
    isStored = queued.has_value();
    if (!queued) return std::nullopt;
    std::optional<ValueMap> payload;
    std::vector<Transaction> taken;
    std::string add;
    for (auto& row : queued->transactions) {
        if (row.moduleName != module.moduleName) continue;
        bool isEdit = payload && row.operationType == TransactionType::editRecord;
        auto own = isEdit || isRefusedAdd(stores_, row) ? ChangePayload::of(row) : std::nullopt;
        if (!own) continue;
        if (isEdit)
            mergeEdit(*payload, *own);
        else
            payload = std::move(own);
        if (!isEdit) add = row.transactionID;
        taken.push_back(row);
    }
    if (!payload) return std::nullopt;
    auto entries = changes->entriesOf(ChangeQueue::older, {add});
    auto place = entries && !entries->empty() ? entries->front().transactionNumber : 0;
    isStored =
        entries && endOlderChanges(stores_, taken, ChangeOutcome::merged) && freeDependents(stores_, recordId, place);
    return RefusedAdd{*std::move(payload), place};
}

RecordTransactionManagerProtocol::Queued RecordTransactionManager::deleteRecord(const std::string& recordID,
                                                                                const Module& module) {
    auto parameters = parametersOf(module);
    parameters.set(Keys::DeleteRecord::id, recordID);
    return addTransaction(
        {.recordID = recordID, .moduleName = module.moduleName, .operationType = TransactionType::deleteRecord},
        parameters);
}

RecordTransactionManagerProtocol::Queued RecordTransactionManager::uploadAttachment(const std::string& recordID,
                                                                                    const std::string& parentID,
                                                                                    const Module& module,
                                                                                    const Module& relatedModule,
                                                                                    const std::string& fileURL) {
    auto body = json::write(ValueMap{{"fileURL", fileURL}});
    if (!body) return std::nullopt;
    return addTransaction({.recordID = recordID,
                           .moduleName = module.moduleName,
                           .operationType = TransactionType::addAttachment,
                           .dataJSON = platform::Data(*std::move(body)),
                           .parentRecordID = parentID,
                           .parentRecordModule = relatedModule.moduleName},
                          {{"relatedmodule", relatedModule.moduleName},
                           {"relatedmoduleAPI", relatedModule.apiName},
                           {"module", module.moduleName},
                           {"moduleAPI", module.apiName},
                           {"id", parentID}});
}

/// A time above all stored ones keeps the user's order, even after the clock was set back.
/// An add has a place among the transactions of the current queue, which can wait for it.
RecordTransactionManagerProtocol::Queued RecordTransactionManager::addTransaction(Transaction transaction,
                                                                                  const ValueMap& parameters,
                                                                                  std::int64_t transactionNumber) {
    auto uri = json::write(parameters);
    auto highest = stores_.transactions()->highestTransactionTime();
    if (!uri || !highest) return std::nullopt;
    transaction.uriData = platform::Data(*std::move(uri));
    transaction.transactionID = platform::Random::uuid();
    transaction.transactionTime =
        std::max<std::int64_t>(platform::Clock::now().time_since_epoch().count(), *highest + 1);
    if (!stores_.transactions()->storeTransaction(transaction)) return std::nullopt;
    auto entry = stores_.changeRegister()->enterNew(ChangeQueue::older, transaction.transactionID);
    if (!entry) return std::nullopt;
    bool isAdd = transaction.operationType == TransactionType::addRecord;
    if (isAdd && !transactionNumber) transactionNumber = transactionIds_.getNewTransactionId();
    if (isAdd && !stores_.changeRegister()->setTransactionNumber(entry->number, transactionNumber)) return std::nullopt;
    auto change = Change::of(transaction, *entry);
    // The notice comes first: nobody is to learn of the server's decision before it.
    afterCommit([wake = wake_, change] {
        changeNotices::saved(change);
        wake();
    });
    return change;
}

}  // namespace tarvo
