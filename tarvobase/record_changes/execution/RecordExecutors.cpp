#include "tarvobase/record_changes/execution/RecordExecutors.h"

#include <algorithm>

#include "platform/Json.h"
#include "platform/Log.h"
#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/record_changes/wire/NetworkParamConstant.h"
#include "tarvobase/records/SharedActivities.h"
#include "tarvobase/records/sql/DeletedRecords.h"
#include "tarvobase/utils/TemporaryIds.h"

namespace tarvo {

namespace {

using Operation = AddRecordNetworkServiceOperation;

TransactionResult cannotSerialize() { return TransactionResult::failure(ErrorResponse::parsingFailed()); }

const ValueList* importedRecords(const NTransaction& transaction) {
    auto data = transaction.payload.find("data");
    return data ? data->asList() : nullptr;
}

}  // namespace

void AddRecordExecutor::send(Executed executed, Completion finish) {
    auto request = requestOf(*executed, Operation::add);
    if (!request) return finish(cannotSerialize());
    addRecordNS->addRecord(*std::move(request), whenAnswered(std::move(executed), std::move(finish)));
}

TransactionResult AddRecordExecutor::accepted(const Executed& executed, const ChangeAnswer& answer) {
    auto store = [self = platform::strongSelf(this), executed, newId = answer.recordId] {
        return self->replaceId(executed, newId);
    };
    return TransactionResult::success({{executed->transaction.recordId, answer.recordId}}, std::move(store));
}

void EditRecordExecutor::send(Executed executed, Completion finish) {
    auto request = requestOf(*executed, Operation::edit);
    if (!request) return finish(cannotSerialize());
    editRecordNS->addRecord(*std::move(request), whenAnswered(std::move(executed), std::move(finish)));
}

/// A record without a row was deleted here, and gets none. An edit that is sent again is answered as it was at first,
/// which would seem to undo a later one.
TransactionResult EditRecordExecutor::accepted(const Executed& executed, const ChangeAnswer& answer) {
    if (!answer.record || executed->isRepeated) return TransactionResult::success({});
    auto store = [parts = parts_, executed, record = *answer.record] {
        auto& module = executed->module.moduleName;
        // A record that is not here any more stays away.
        for (auto& each : SharedActivities::modulesOf(*parts.stores.databaseAdapter(), module))
            if (!parts.recordPersistance->modifyRecord(each, record) && each == module) return false;
        return true;
    };
    return TransactionResult::success({}, std::move(store));
}

void DeleteRecordExecutor::send(Executed executed, Completion finish) {
    using Keys = NetworkParamConstant::DeleteRecord;
    auto& recordId = executed->transaction.recordId;
    auto params = parametersOf(executed->module);
    params.set(Keys::id, recordId);
    DeleteRecordRequest request{.params = std::move(params), .recordID = recordId, .key = executed->key};
    deleteRecordNS->deleteRecord(std::move(request), whenAnswered(std::move(executed), std::move(finish)));
}

TransactionResult DeleteRecordExecutor::accepted(const Executed& executed, const ChangeAnswer&) {
    return TransactionResult::success({}, [parts = parts_, executed] {
        return removeDeletedRecords(parts.stores.databaseAdapter(), *parts.recordPersistance,
                                    executed->module.moduleName, {executed->transaction.recordId});
    });
}

void ImportRecordExecutor::send(Executed executed, Completion finish) {
    auto records = importedRecords(executed->transaction);
    auto body = records && !records->empty() ? json::write(executed->transaction.payload) : std::nullopt;
    if (!body) {
        platform::log(platform::LogLevel::error, "transactions", "Serialization failed!");
        return finish(cannotSerialize());
    }
    ImportRecordRequest request{.data = platform::Data(*std::move(body)),
                                .params = parametersOf(executed->module),
                                .count = records->size(),
                                .key = executed->key};
    importRecordNS->addRecords(std::move(request), [weak = platform::weakSelf(this), queue = answerQueue_, executed,
                                                    finish = std::move(finish)](ImportAnswer answer) {
        queue->async([weak, executed, finish, answer = std::move(answer)] {
            auto self = weak.lock();
            finish(self ? self->imported(executed, answer) : cannotSerialize());
        });
    });
}

TransactionResult ImportRecordExecutor::imported(const Executed& executed, const ImportAnswer& answer) {
    if (!answer) return resultOf(executed, answer.error());
    using Outcome = ChangeAnswer::Outcome;
    auto& answers = answer.value();
    auto has = [&](Outcome outcome) {
        return std::any_of(answers.begin(), answers.end(), [&](auto& one) { return one.outcome == outcome; });
    };
    // What cannot be read may have been added: the import can only be repeated as it is, under its key.
    if (has(Outcome::unreadable)) return resultOf(executed, ChangeAnswer::unreadable());
    if (has(Outcome::refused)) return keepRefused(executed, answers);
    auto& recordId = executed->transaction.recordId;
    if (answers.size() != 1 || !isTemporaryRecordId(recordId)) return TransactionResult::success({});
    auto store = [self = platform::strongSelf(this), executed, newId = answers.front().recordId] {
        return self->replaceId(executed, newId);
    };
    return TransactionResult::success({{recordId, answers.front().recordId}}, std::move(store));
}

/// The rest is another payload, and gets another key: the server would answer the former key as before.
TransactionResult ImportRecordExecutor::keepRefused(const Executed& executed,
                                                    const std::vector<ChangeAnswer>& answers) {
    std::optional<ErrorResponse> first;
    ValueList rest;
    auto records = importedRecords(executed->transaction);
    for (std::size_t i = 0; i < answers.size(); ++i) {
        if (answers[i].outcome == ChangeAnswer::Outcome::accepted) continue;
        rest.push_back((*records)[i]);
        if (!first) first = answers[i].refusal;
    }
    auto result = TransactionResult::failure(first.value_or(ErrorResponse::parsingFailed()));
    if (rest.size() == answers.size()) return result;
    auto payload = executed->transaction.payload;
    payload.set("data", std::move(rest));
    result.store = [stores = parts_.stores, id = executed->transaction.id, payload] {
        auto text = json::write(payload);
        auto entries = stores.changeRegister()->entriesOf(ChangeQueue::current, {std::to_string(id)});
        if (!text || !entries || !stores.currentTransactions()->update({}, {{id, *text}})) return false;
        return entries->empty() || stores.changeRegister()->renewKey(entries->front().number).has_value();
    };
    return result;
}

}  // namespace tarvo
