#include "tarvobase/list_view/FetchRecordNetworkService.h"

#include "tarvobase/records/RecordParser.h"

namespace tarvo {

FetchRecordNetworkService::FetchRecordNetworkService(std::shared_ptr<NetworkConstantsProtocol> constants)
    : BaseNetworkService(std::move(constants)) {
    baseURL = networkConstants->getURL(CRMAPIs::Case::getRecord);
}

void FetchRecordNetworkService::fetchRecord(RecordFetch fetch) {
    ValueMap params{{"id", fetch.recordID}, {"module", fetch.module.moduleName}, {"moduleAPI", fetch.module.apiName}};
    sendRequest({.params = std::move(params),
                 .method = HTTPMethod::post,
                 .shouldAddOrgId = true,
                 .completionHandler = [weak = platform::weakSelf(this), fetch = std::move(fetch)](
                                          Data data, std::optional<URLResponse>, std::optional<std::string>,
                                          std::optional<NetworkError> error, int) {
                     if (auto self = weak.lock()) self->answered(data, error, fetch);
                 }});
}

void FetchRecordNetworkService::answered(const Data& data, const std::optional<NetworkError>& error,
                                         const RecordFetch& fetch) {
    auto handler = errorHandler.lock();
    if (error) {
        // A request without a token went nowhere, and the host has heard of that already.
        bool told = error->kind == NetworkError::Kind::notSent;
        if (handler && !told) handler->networkResponseError();
        return;
    }
    auto answer = RecordParser<GetRecordInfo>().parse(data);
    bool isUsable = answer && !answer->result.empty() && answer->result.front() && answer->result.front()->data;
    auto listener = recordDelegate.lock();
    if (!isUsable) {
        if (handler) handler->parsingError();
    } else if (listener) {
        listener->parsedRecords(*answer->result.front()->data, fetch);
    }
}

}  // namespace tarvo
