#include "tarvobase/record_changes/wire/UploadAttachmentNetworkService.h"

#include "tarvobase/record_changes/wire/ChangeAnswerParser.h"
#include "tarvobase/record_changes/wire/NetworkParamConstant.h"

namespace tarvo {

void UploadAttachmentNetworkService::uploadAttachment(UploadAttachmentRequest request, ChangeCompletion completion) {
    bren::Headers headers;
    headers.set(NetworkParamConstant::transactionIdHeader, request.key);
    // Uploads do not name the organisation by themselves, and this one must not reach another.
    if (!scope().organisation.empty()) headers.set(service::HEADER_ORGID, scope().organisation);
    uploadRequest({.params = std::move(request.params),
                   .headers = std::move(headers),
                   .fileURL = std::move(request.fileURL),
                   .fileParamName = "file",
                   .priority = NTaskPriority::high,
                   .shouldAddOrgId = true,
                   .completionHandler = [completion = std::move(completion)](NetworkAnswer answer) {
                       completion(ChangeAnswerParser::ofUpload(answer));
                   }});
}

}  // namespace tarvo
