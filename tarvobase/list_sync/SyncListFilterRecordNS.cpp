#include "tarvobase/list_sync/SyncListFilterRecordNS.h"

#include "platform/Log.h"
#include "tarvobase/list_sync/wire/SyncLFRecordParser.h"
#include "tarvobase/list_view/GetCVRecordsNetworkService.h"
#include "tarvobase/network_layer/NetworkFailure.h"
#include "tarvobase/utils/CommonUtils.h"

namespace tarvo {

namespace {

FailureDetails failedListSync(FailureReason reason, const std::string& why) {
    platform::log(platform::LogLevel::warning, "list sync", "no changes of a list from the server: " + why);
    return {reason, why};
}

Result<SyncLFRecordParsedResult, FailureDetails> listChangesOf(const NetworkAnswer& answer) {
    if (answer.error) return failedListSync(failureReasonOf(*answer.error), answer.error->message);
    auto parsed = SyncLFRecordParser::parse(answer.body);
    if (parsed) return std::move(parsed).value();
    bool isRefusal = parsed.error().which() == ParserError::Case::responseError;
    return failedListSync(isRefusal ? FailureReason::refused : FailureReason::unusableAnswer, parsed.error().logText());
}

}  // namespace

void SyncListFilterRecordNS::getSyncRecordList(const GetSyncLFRecordsNetworkRequest& request, Completion completion) {
    auto params = viewParamsOf({.cv = request.filter,
                                .module = request.module,
                                .from = request.from,
                                .maxDownloadCount = request.maxDownloadCount});
    params.set("lmt", request.lastModifiedTime);
    post(std::move(params), [completion = std::move(completion)](NetworkAnswer answer) {
        CommonUtils::performAsyncInBackground(
            [completion, answer = std::move(answer)] { completion(listChangesOf(answer)); });
    });
}

}  // namespace tarvo
