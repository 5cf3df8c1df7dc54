#include "tarvobase/list_view/FetchRecordNetworkService.h"

#include "tarvobase/records/RecordParser.h"

namespace tarvo {

void FetchRecordNetworkService::fetchRecord(RecordFetch fetch) {
    post({{"id", fetch.recordID}, {"module", fetch.module.moduleName}, {"moduleAPI", fetch.module.apiName}},
         [weak = platform::weakSelf(this), fetch](NetworkAnswer answer) {
             if (auto self = weak.lock()) self->answered(answer, fetch);
         });
}

void FetchRecordNetworkService::answered(const NetworkAnswer& answer, const RecordFetch& fetch) {
    if (answer.error) return reportFailure(*answer.error);
    auto parsed = RecordParser<GetRecordInfo>().parse(answer.body);
    bool isUsable = parsed && !parsed->result.empty() && parsed->result.front() && parsed->result.front()->data;
    if (isUsable) {
        if (auto listener = recordDelegate.lock()) listener->parsedRecords(*parsed->result.front()->data, fetch);
    } else if (auto handler = errorHandler.lock()) {
        handler->parsingError();
    }
}

}  // namespace tarvo
