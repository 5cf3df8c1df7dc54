#include "tarvobase/download/DownloadRecordsNetworkService.h"

#include "platform/Log.h"
#include "tarvobase/download/wire/DownloadedPage.h"
#include "tarvobase/network_layer/NetworkFailure.h"

namespace tarvo {

namespace {

FailureDetails failedDownload(const std::string& moduleName, FailureReason reason, const std::string& why) {
    platform::log(platform::LogLevel::warning, "record download",
                  "no records of " + moduleName + " from the server: " + why);
    return {reason, why};
}
FailureDetails failedDownload(const std::string& moduleName, const ParserError& error) {
    bool isRefusal = error.which() == ParserError::Case::responseError;
    return failedDownload(moduleName, isRefusal ? FailureReason::refused : FailureReason::unusableAnswer,
                          error.logText());
}

/// Reads the one entry of an answer. Records of another module than the one asked for would go into a table that they
/// do not belong to.
Result<DownloadedPage, FailureDetails> downloadedPageOf(const NetworkAnswer& answer, const std::string& moduleName) {
    if (answer.error) return failedDownload(moduleName, failureReasonOf(*answer.error), answer.error->message);
    auto parsed = WireRecordsParser::parse(answer.body);
    if (!parsed) return failedDownload(moduleName, parsed.error());
    if (parsed->result.empty()) return failedDownload(moduleName, ParserError::noData());
    auto& entry = parsed->result.front();
    if (!entry) return failedDownload(moduleName, entry.error());
    if (!entry->data) return failedDownload(moduleName, entry->data.error());
    if (entry->info.moduleName != moduleName)
        return failedDownload(moduleName, FailureReason::unusableAnswer, "the answer does not name the module");
    return DownloadedPage{*entry->data, entry->info};
}

}  // namespace

void DownloadRecordsNetworkService::downloadRecords(const DownloadRecordsNetworkParams& params, Completion completion) {
    ValueMap values{{"module", params.module.moduleName}, {"moduleAPI", params.module.apiName}, {"count", params.from}};
    if (params.maxDownloadCount) values.set("mcount", *params.maxDownloadCount);
    post(std::move(values), [name = params.module.moduleName, completion = std::move(completion)](
                                NetworkAnswer answer) { completion(downloadedPageOf(answer, name)); });
}

}  // namespace tarvo
