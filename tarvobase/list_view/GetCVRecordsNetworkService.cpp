#include "tarvobase/list_view/GetCVRecordsNetworkService.h"

#include "platform/Log.h"
#include "tarvobase/list_view/wire/ListPage.h"
#include "tarvobase/network_layer/NetworkFailure.h"

namespace tarvo {

ValueMap viewParamsOf(const GetCVRecordsNetworkRequest& request) {
    auto sort = request.cv.sortField().value_or(FilterProtocol::defaultSortField());
    ValueMap params{
        {"cvid", request.cv.filterId()},
        {"module", request.module.moduleName},
        {"moduleAPI", request.module.apiName},
        {"cvName", request.cv.filterName()},
        {"count", request.from},
        {"sort_by", sort.column},
        {"sort_order", std::string(rawText(sort.isAscending ? SortOrder::ascending : SortOrder::descending))}};
    if (request.maxDownloadCount) params.set("mcount", *request.maxDownloadCount);
    return params;
}

namespace {

FailureDetails failedPage(FailureReason reason, const std::string& why) {
    platform::log(platform::LogLevel::warning, "list view", "no records of a view from the server: " + why);
    return {reason};
}
FailureDetails failedPage(const ParserError& error) {
    bool isRefusal = error.which() == ParserError::Case::responseError;
    return failedPage(isRefusal ? FailureReason::refused : FailureReason::unusableAnswer, error.logText());
}

/// Reads the one entry of an answer.
Result<ListPage, FailureDetails> pageOf(const NetworkAnswer& answer) {
    if (answer.error) {
        auto failure = failedPage(failureReasonOf(*answer.error), answer.error->message);
        failure.cause = answer.error->message;
        return failure;
    }
    auto parsed = WireRecordsParser::parse(answer.body);
    if (!parsed) return failedPage(parsed.error());
    if (parsed->result.empty()) return failedPage(ParserError::noData());
    auto& entry = parsed->result.front();
    if (!entry) return failedPage(entry.error());
    if (!entry->data) return failedPage(entry->data.error());
    return ListPage{*entry->data, entry->info, parsed->responseInfo};
}

}  // namespace

void GetCVRecordsNetworkService::getRecordList(const GetCVRecordsNetworkRequest& request, Completion completion) {
    post(viewParamsOf(request),
         [completion = std::move(completion)](NetworkAnswer answer) { completion(pageOf(answer)); });
}

}  // namespace tarvo
