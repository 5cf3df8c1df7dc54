#include "tarvobase/list_view/GetCVRecordsNetworkService.h"

#include "platform/Log.h"
#include "tarvobase/records/wire/WireRecords.h"

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
    post(paramsOf(request), [completion = std::move(completion)](NetworkAnswer answer) {
        if (answer.error) {
            platform::log(platform::LogLevel::warning, "list view",
                          "the records of a view were not answered: " + answer.error->message);
            return completion(std::nullopt);
        }
        auto parsed = WireRecordsParser::parse(answer.body);
        if (!parsed)
            platform::log(platform::LogLevel::warning, "list view",
                          "the answer with the records of a view cannot be read");
        completion(parsed ? std::optional(*std::move(parsed)) : std::nullopt);
    });
}

}  // namespace tarvo
