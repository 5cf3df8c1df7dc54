#include "tarvobase/record_changes/wire/ImportRecordNS.h"

#include "tarvobase/record_changes/wire/NetworkParamConstant.h"

namespace tarvo {

void ImportRecordNS::addRecords(ImportRecordRequest request, ImportCompletion completion) {
    bren::Headers headers;
    headers.set(NetworkParamConstant::transactionIdHeader, request.key);
    headers.set("Content-Type", "application/json");
    sendRequest(
        {.params = std::move(request.params),
         .headers = std::move(headers),
         .body = std::move(request.data),
         .shouldAddOrgId = true,
         .completionHandler = [count = request.count, completion = std::move(completion)](NetworkAnswer answer) {
             completion(ChangeAnswerParser::ofImport(answer, count));
         }});
}

}  // namespace tarvo
