#include "tarvobase/list_view/FetchRecordNetworkService.h"

#include "tarvobase/network_layer/FirstEntry.h"
#include "tarvobase/records/wire/RecordParser.h"

namespace tarvo {

void FetchRecordNetworkService::fetchRecord(RecordFetch fetch) {
    post({{"id", fetch.recordID}, {"module", fetch.module.moduleName}, {"moduleAPI", fetch.module.apiName}},
         [weak = platform::weakSelf(this), fetch](NetworkAnswer answer) {
             if (auto self = weak.lock()) self->answered(answer, fetch);
         });
}

void FetchRecordNetworkService::answered(const NetworkAnswer& answer, const RecordFetch& fetch) {
    if (answer.error) return reportFailure(*answer.error);
    if (auto records = firstEntry(RecordParser<GetRecordInfo>(), answer.body)) {
        if (auto listener = recordDelegate.lock()) listener->parsedRecords(*records, fetch);
    } else if (auto handler = errorHandler.lock()) {
        handler->parsingError();
    }
}

}  // namespace tarvo
