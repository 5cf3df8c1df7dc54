#include "tarvobase/list_view/GetCVRecordsNetworkService.h"

#include "platform/Log.h"

namespace tarvo {

namespace {

ValueMap paramsOf(const GetCVRecordsNetworkRequest& request) {
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

}  // namespace

void GetCVRecordsNetworkService::getRecordList(const GetCVRecordsNetworkRequest& request, Completion completion) {
    sendRequest({.params = paramsOf(request),
                 .shouldAddOrgId = true,
                 .completionHandler = [completion = std::move(completion)](Data data, std::optional<URLResponse>,
                                                                           std::optional<std::string>,
                                                                           std::optional<NetworkError> error, int) {
                     if (error) {
                         platform::log("the records of a view were not answered: " + error->message);
                         return completion(std::nullopt);
                     }
                     auto answer = WireRecordsParser::parse(data);
                     if (!answer) platform::log("the answer with the records of a view cannot be read");
                     completion(answer ? std::optional(*std::move(answer)) : std::nullopt);
                 }});
}

}  // namespace tarvo
