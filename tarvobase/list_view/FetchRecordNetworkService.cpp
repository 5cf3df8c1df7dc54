#include "tarvobase/list_view/FetchRecordNetworkService.h"

#include "tarvobase/network_layer/FirstEntry.h"
#include "tarvobase/records/wire/RecordParser.h"

namespace tarvo {

namespace {

/// An empty list means that the server has no such record, so that rows which hold no record are not one.
class OneRecordParser final : public RecordParser<GetRecordInfo> {
public:
    explicit OneRecordParser(std::optional<std::int64_t>& responseTime) : responseTime_(responseTime) {}
    Result<std::vector<ValueMap>, ParserError> parseResult(const ValueList& rows, const GetRecordInfo& info) override {
        auto records = RecordParser::parseResult(rows, info);
        if (records && records->empty() && !rows.empty()) return ParserError(ParserError::Case::typeConversionFailed);
        responseTime_ = info.responseTime;
        return records;
    }

private:
    std::optional<std::int64_t>& responseTime_;
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
    auto answered = fetch;
    if (auto records = firstEntry(OneRecordParser(answered.responseTime), answer.body)) {
        if (auto listener = recordDelegate.lock()) listener->parsedRecords(*records, answered);
    } else if (auto handler = errorHandler.lock()) {
        handler->parsingError();
    }
}

}  // namespace tarvo
