#include "tarvobase/sync/RecordsSyncNetworkService.h"

#include "platform/Log.h"
#include "tarvobase/network_layer/NetworkFailure.h"
#include "tarvobase/sync/wire/RecordsSyncParser.h"
#include "tarvobase/utils/CommonUtils.h"

namespace tarvo {

namespace {

/// Most answers bring nothing. One thread takes them in faster than several, which would wait for each other at the
/// settings.
constexpr std::size_t shortBody = 16 * 1024;

FailureDetails loggedSyncFailure(const Module& module, FailureReason reason, const std::string& why) {
    platform::log(platform::LogLevel::warning, "sync",
                  "no changes of " + module.moduleName + " from the server: " + why);
    return {reason, why};
}

RecordsSyncDelegate::SyncResults syncResultsOf(const NetworkAnswer& answer, const Module& module) {
    if (answer.error) return loggedSyncFailure(module, failureReasonOf(*answer.error), answer.error->message);
    auto parsed = RecordsSyncParser::parseResult(answer.body);
    if (parsed) return std::move(parsed).value();
    bool isRefusal = parsed.error().which() == ParserError::Case::responseError;
    return loggedSyncFailure(module, isRefusal ? FailureReason::refused : FailureReason::unusableAnswer,
                             parsed.error().logText());
}

}  // namespace

void RecordsSyncNetworkService::syncRecordsForModule(const Module& module, const std::string& lastModifiedTime,
                                                     std::int64_t from, std::int64_t maximumRecords) {
    auto completed = [listener = recordsSyncDelegate.lock(), module, from,
                      shortAnswers = shortAnswers_](NetworkAnswer answer) {
        if (!listener) return;
        bool isShort = answer.body.size() <= shortBody;
        auto take = [listener, module, from, answer = std::move(answer)]() mutable {
            auto results = syncResultsOf(answer, module);
            // The document replaces the body, and a page fills enough memory once.
            answer = {};
            listener->syncCompleted(std::move(results), from, module);
        };
        if (isShort)
            shortAnswers->async(std::move(take));
        else
            CommonUtils::performAsyncInBackground(std::move(take));
    };
    post({{"module", module.moduleName},
          {"moduleAPI", module.apiName},
          {"lmt", lastModifiedTime},
          {"count", from},
          {"mcount", maximumRecords}},
         std::move(completed));
}

}  // namespace tarvo
