#include "tarvobase/init_process/steps/AppInitNetworkService.h"

#include "tarvobase/init_process/parsers/InitDownloadParser.h"
#include "tarvobase/init_process/steps/KeptInitData.h"

namespace tarvo {

void AppInitNetworkService::getAppInitData() {
    auto reusable = KeptInitData::reusable(scope());
    if (!reusable) return post({});
    if (auto listener = initDataDelegate.lock()) listener->initDataParsed(reusable);
}

void AppInitNetworkService::taskCompletionHandler(NetworkAnswer answer) {
    auto parsed = InitDownloadParser::parseInitData(answer.body);
    if (auto listener = initDataDelegate.lock()) listener->initDataParsed(parsed);
    if (answer.error)
        reportFailure(*answer.error);
    else if (auto handler = parsed ? nullptr : errorHandler.lock())
        handler->parsingError();
    if (parsed) KeptInitData::keep(scope(), *std::move(parsed));
}

}  // namespace tarvo
