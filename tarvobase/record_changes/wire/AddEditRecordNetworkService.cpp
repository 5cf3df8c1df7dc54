#include "tarvobase/record_changes/wire/AddEditRecordNetworkService.h"

#include "tarvobase/record_changes/wire/ChangeAnswerParser.h"
#include "tarvobase/record_changes/wire/NetworkParamConstant.h"

namespace tarvo {

void AddEditRecordNetworkService::addRecord(AddEditRecordRequest request, ChangeCompletion completion) {
    bool isAdd = request.operation == AddRecordNetworkServiceOperation::add;
    bren::Headers headers;
    headers.set(NetworkParamConstant::transactionIdHeader, request.key);
    headers.set("Content-Type", "application/json");
    sendRequest({.params = std::move(request.params),
                 .url = networkConstants->getURL(isAdd ? CRMAPIs::Case::addRecord : CRMAPIs::Case::updateRecord),
                 .headers = std::move(headers),
                 .body = std::move(request.jsonData),
                 .shouldAddOrgId = true,
                 .completionHandler = [isAdd, recordID = std::move(request.recordID),
                                       completion = std::move(completion)](NetworkAnswer answer) {
                     completion(isAdd ? ChangeAnswerParser::ofAdd(answer)
                                      : ChangeAnswerParser::ofEdit(answer, recordID));
                 }});
}

}  // namespace tarvo
