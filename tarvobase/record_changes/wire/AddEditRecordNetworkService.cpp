#include "tarvobase/record_changes/wire/AddEditRecordNetworkService.h"

#include "tarvobase/record_changes/wire/ChangeAnswerParser.h"
#include "tarvobase/record_changes/wire/NetworkParamConstant.h"

namespace tarvo {

namespace {

ChangeAnswer answerTo(const AddEditRecordRequest& request, const NetworkAnswer& answer) {
    bool isAdd = request.operation == AddRecordNetworkServiceOperation::add;
    if (request.isNote)
        return isAdd ? ChangeAnswerParser::ofAddedNote(answer)
                     : ChangeAnswerParser::ofEditedNote(answer, request.recordID);
    return isAdd ? ChangeAnswerParser::ofAdd(answer) : ChangeAnswerParser::ofEdit(answer, request.recordID);
}

}  // namespace

void AddEditRecordNetworkService::addRecord(AddEditRecordRequest request, ChangeCompletion completion) {
    bool isAdd = request.operation == AddRecordNetworkServiceOperation::add;
    bren::Headers headers;
    headers.set(NetworkParamConstant::transactionIdHeader, request.key);
    headers.set("Content-Type", "application/json");
    auto params = std::move(request.params);
    auto body = std::move(request.jsonData);
    sendRequest({.params = std::move(params),
                 .url = networkConstants->getURL(isAdd ? CRMAPIs::Case::addRecord : CRMAPIs::Case::updateRecord),
                 .headers = std::move(headers),
                 .body = std::move(body),
                 .shouldAddOrgId = true,
                 .completionHandler = [request = std::move(request), completion = std::move(completion)](
                                          NetworkAnswer answer) { completion(answerTo(request, answer)); }});
}

}  // namespace tarvo
