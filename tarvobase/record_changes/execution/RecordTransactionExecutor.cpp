#include "tarvobase/record_changes/execution/RecordTransactionExecutor.h"

#include <algorithm>
#include <utility>

#include "platform/Log.h"
#include "platform/Random.h"
#include "tarvobase/database_layer/TransactionEnd.h"
#include "tarvobase/notification/BrenNotificationCenter.h"
#include "tarvobase/notification/RecordChangedObserver.h"
#include "tarvobase/record_changes/internal/ChangePayload.h"
#include "tarvobase/record_changes/wire/NetworkParamConstant.h"
#include "tarvobase/records/sql/RecordInDatabase.h"
#include "tarvobase/transaction/AddEditRecordTransactionHandler.h"

namespace tarvo {

namespace {

using ExecutorCompletion = TransactionExecutor::Completion;

TransactionResult failedParsing() { return TransactionResult::failure(ErrorResponse::parsingFailed()); }

/// Completes a transaction exactly once, at the latest when nobody can complete it any more.
class OneCompletion {
public:
    OneCompletion(ExecutorCompletion completion, std::shared_ptr<DispatchQueue> queue)
        : completion_(std::move(completion)), queue_(std::move(queue)) {}
    OneCompletion(const OneCompletion&) = delete;
    OneCompletion& operator=(const OneCompletion&) = delete;
    ~OneCompletion() {
        if (!completion_) return;
        // Whoever drops the last copy may hold a lock.
        queue_->async([completion = std::move(completion_)] { completion(failedParsing()); });
    }
    void complete(TransactionResult result) {
        if (auto completion = std::exchange(completion_, nullptr)) completion(std::move(result));
    }

private:
    ExecutorCompletion completion_;
    const std::shared_ptr<DispatchQueue> queue_;
};

/// Returns the register's entry of a transaction. One that is not in the queue gets a new key. Returns nullopt if the
/// register cannot be read: under another key the server would apply a transaction twice.
std::optional<ChangeEntry> registeredEntryOf(const Stores& stores, const NTransaction& transaction) {
    auto entries = stores.changeRegister()->entriesOf(ChangeQueue::current, {std::to_string(transaction.id)});
    if (!entries) return std::nullopt;
    return entries->empty() ? ChangeEntry{.key = platform::Random::uuid()} : entries->front();
}

}  // namespace

ExecutionParts ExecutionParts::of(const Stores& stores, const std::shared_ptr<TransactionManagerContract>& manager,
                                  int maxSingleMerge) {
    return {.stores = stores,
            .recordPersistance = RecordInDatabase::make(stores.databaseAdapter()),
            .moduleDM = GetModuleInfoDMA::getModuleInfoDM(stores.databaseAdapter(), stores.memory),
            .transactionManager = manager,
            .maxSingleMerge = maxSingleMerge};
}

FieldList ExecutionParts::metadataOf(const Module& module) const {
    auto info = moduleDM->getModuleInfo(module.moduleName);
    return info ? std::move(info).value().metadata : FieldList(module.moduleName, {}, {});
}

RecordTransactionExecutor::RecordTransactionExecutor(ExecutionParts parts, Kinds kinds)
    : parts_(std::move(parts)), replacement_(parts_.stores), kinds_(std::move(kinds)) {}

void RecordTransactionExecutor::execute(const NTransaction& transaction, Completion onCompletion) {
    auto one = std::make_shared<OneCompletion>(std::move(onCompletion), answerQueue_);
    auto finish = [one](TransactionResult result) { one->complete(std::move(result)); };
    if (std::find(kinds_.begin(), kinds_.end(), transaction.kind) == kinds_.end())
        return finish(TransactionResult::failure(ErrorResponse::invlaidTransaction()));
    auto module = parts_.stores.modules()->getModuleByModuleName(transaction.module.rawValue());
    if (!module) return finish(TransactionResult::failure(ErrorResponse::moduleNotFound()));
    auto entry = registeredEntryOf(parts_.stores, transaction);
    if (!entry) return finish(TransactionResult::noAnswer("the register of changes cannot be read"));
    send(std::make_shared<const ExecutedTransaction>(
             ExecutedTransaction{transaction, std::move(module).value(), entry->key, entry->sends > 1}),
         std::move(finish));
}

ChangeCompletion RecordTransactionExecutor::whenAnswered(Executed executed, Completion finish) {
    return [weak = platform::weakSelf(this), queue = answerQueue_, executed = std::move(executed),
            finish = std::move(finish)](ChangeAnswer answer) {
        queue->async([weak, executed, finish, answer = std::move(answer)] {
            auto self = weak.lock();
            finish(self ? self->resultOf(executed, answer) : failedParsing());
        });
    };
}

TransactionResult RecordTransactionExecutor::resultOf(const Executed& executed, const ChangeAnswer& answer) {
    using Outcome = ChangeAnswer::Outcome;
    switch (answer.outcome) {
        case Outcome::accepted:
            return accepted(executed, answer);
        case Outcome::refused: {
            auto result = afterRefusal(executed, answer.refusal.value_or(ErrorResponse::parsingFailed()));
            result.mayBeApplied = answer.isOfWholeRequest && executed->isRepeated;
            return result;
        }
        case Outcome::unreadable:
            return failedParsing();
        case Outcome::noAnswer:
            return TransactionResult::noAnswer(
                answer.silence ? std::string(caseName(*answer.silence)) : std::string("no answer"), answer.isUnsent);
    }
    return failedParsing();
}

TransactionResult RecordTransactionExecutor::accepted(const Executed&, const ChangeAnswer&) {
    return TransactionResult::success({});
}

TransactionResult RecordTransactionExecutor::afterRefusal(const Executed& executed, const ErrorResponse& refusal) {
    // Trying again brings no file back.
    bool isFinal = !isMergedAfterRefusal() || refusal.code == ErrorResponse::fileNotReadable().code;
    if (isFinal) return TransactionResult::failure(refusal);
    return TransactionResult::failure(refusal, [parts = parts_, executed, refusal] {
        auto manager = parts.transactionManager.lock();
        if (!manager) return;
        AddEditRecordTransactionHandler handler(*manager, parts.stores, parts.maxSingleMerge);
        if (!handler.handleError(refusal, executed->transaction, parts.metadataOf(executed->module)))
            platform::log(platform::LogLevel::warning, "transactions",
                          "transaction " + std::to_string(executed->transaction.id) + " stays refused");
    });
}

bool RecordTransactionExecutor::replaceId(const Executed& executed, const std::string& newId) const {
    auto& module = executed->module.moduleName;
    auto& formerId = executed->transaction.recordId;
    if (!replacement_.replace(module, formerId, newId)) return false;
    afterCommit([module, formerId, newId] {
        BrenNotificationCenter::shared().notify<RecordChangedObserver>(
            true, [module, formerId, newId](auto& observer) { observer.recordUpdated(module, formerId, newId); });
    });
    return true;
}

/// An edit names its record, whose id may have changed since the payload was made.
std::optional<AddEditRecordRequest> RecordTransactionExecutor::requestOf(const ExecutedTransaction& executed,
                                                                         AddRecordNetworkServiceOperation operation) {
    auto payload = executed.transaction.payload;
    if (operation == AddRecordNetworkServiceOperation::edit)
        payload.set(RecordConstants::FieldAPINames::Id, executed.transaction.recordId);
    auto body = ChangePayload::body(payload);
    if (!body) {
        platform::log(platform::LogLevel::error, "transactions", "Serialization failed!");
        return std::nullopt;
    }
    return AddEditRecordRequest{.jsonData = *std::move(body),
                                .params = parametersOf(executed.module),
                                .operation = operation,
                                .recordID = executed.transaction.recordId,
                                .key = executed.key};
}

ValueMap RecordTransactionExecutor::parametersOf(const Module& module) {
    using Keys = NetworkParamConstant::AddEditRecord;
    ValueMap parameters;
    parameters.set(Keys::module, module.moduleName);
    parameters.set(Keys::moduleAPI, module.apiName);
    return parameters;
}

}  // namespace tarvo
