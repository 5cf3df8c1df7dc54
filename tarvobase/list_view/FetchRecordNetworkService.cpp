#include "tarvobase/list_view/FetchRecordNetworkService.h"

#include "tarvobase/network_layer/FirstEntry.h"
#include "tarvobase/records/wire/RecordParser.h"

namespace tarvo {

namespace {

/// An empty list means that the server has no such record, so that rows which hold no record are not one.
class OneRecordParser final : public RecordParser<GetRecordInfo> {
public:
    Result<std::vector<ValueMap>, ParserError> parseResult(const ValueList& rows, const GetRecordInfo& info) override {
        auto records = RecordParser::parseResult(rows, info);
        if (records && records->empty() && !rows.empty()) return ParserError(ParserError::Case::typeConversionFailed);
        return records;
    }
};

}  // namespace

void FetchRecordNetworkService::fetchRecord(RecordFetch fetch) {
    post({{"id", fetch.recordID}, {"module", fetch.module.moduleName}, {"moduleAPI", fetch.module.apiName}},
         [weak = platform::weakSelf(this), fetch](NetworkAnswer answer) {
             if (auto self = weak.lock()) self->answered(answer, fetch);
         });
}

void FetchRecordNetworkService::answered(const NetworkAnswer& answer, const RecordFetch& fetch) {
    if (answer.error) return reportFailure(*answer.error);
    if (auto records = firstEntry(OneRecordParser(), answer.body)) {
        if (auto listener = recordDelegate.lock()) listener->parsedRecords(*records, fetch);
    } else if (auto handler = errorHandler.lock()) {
        handler->parsingError();
    }
}

}  // namespace tarvo
