#include "tarvobase/record_changes/internal/ChangeSender.h"

#include "platform/Json.h"

namespace tarvo {

namespace {

ValueMap mapIn(const std::optional<platform::Data>& data) {
    auto value = data ? json::parse(*data) : std::nullopt;
    return value && value->asMap() ? *value->asMap() : ValueMap();
}

}  // namespace

void NetworkChangeSender::send(const Transaction& change, const std::string& key, ChangeCompletion completion) {
    auto params = mapIn(change.uriData);
    switch (change.operationType) {
        case TransactionType::addRecord:
        case TransactionType::editRecord: {
            bool isAdd = change.operationType == TransactionType::addRecord;
            using Operation = AddRecordNetworkServiceOperation;
            return addEditService->addRecord({.jsonData = change.dataJSON.value_or(platform::Data()),
                                              .params = std::move(params),
                                              .operation = isAdd ? Operation::add : Operation::edit,
                                              .recordID = change.recordID,
                                              .key = key},
                                             std::move(completion));
        }
        case TransactionType::deleteRecord:
            return deleteService->deleteRecord({std::move(params), change.recordID, key}, std::move(completion));
        case TransactionType::addAttachment: {
            auto file = mapIn(change.dataJSON);
            auto path = file.find("fileURL");
            return uploadService->uploadAttachment({std::move(params), path ? path->textOr("") : "", key},
                                                   std::move(completion));
        }
        default:
            return completion(ChangeAnswer::refused(ErrorResponse::invlaidTransaction()));
    }
}

}  // namespace tarvo
