#include "tarvobase/record_changes/wire/DeleteRecordNetworkService.h"

#include "tarvobase/record_changes/wire/ChangeAnswerParser.h"
#include "tarvobase/record_changes/wire/NetworkParamConstant.h"

namespace tarvo {

void DeleteRecordNetworkService::deleteRecord(DeleteRecordRequest request, ChangeCompletion completion) {
    bren::Headers headers;
    headers.set(NetworkParamConstant::transactionIdHeader, request.key);
    sendRequest({.params = std::move(request.params),
                 .headers = std::move(headers),
                 .shouldAddOrgId = true,
                 .completionHandler = [recordID = std::move(request.recordID),
                                       completion = std::move(completion)](NetworkAnswer answer) {
                     completion(ChangeAnswerParser::ofDelete(answer, recordID));
                 }});
}

}  // namespace tarvo
