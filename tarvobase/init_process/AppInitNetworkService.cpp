#include "tarvobase/init_process/AppInitNetworkService.h"

#include <mutex>

#include "platform/Clock.h"
#include "platform/ProcessState.h"
#include "tarvobase/configuration/CommonConfigration.h"

namespace tarvo {

namespace {

/// The last answer of the process and whose it is.
struct OldResult {
    struct Kept {
        ParsedInitData data;
        std::optional<std::string> accountID;
    };
    std::mutex mutex;
    std::optional<Kept> kept;

    static OldResult& shared() { return platform::ProcessState::current().get<OldResult>(); }
};

constexpr std::int64_t reusedForSeconds = 59;

std::optional<ParsedInitData> reusableResult() {
    auto account = CommonConfigration::sharedInstance().getCurrentAccountID();
    auto now = platform::Clock::secondsSince1970();
    auto& old = OldResult::shared();
    std::lock_guard lock(old.mutex);
    if (!old.kept || !old.kept->accountID || old.kept->accountID != account) return std::nullopt;
    auto age = now - static_cast<std::int64_t>(old.kept->data.responseTime);
    return age >= 0 && age <= reusedForSeconds ? std::optional(old.kept->data) : std::nullopt;
}

void keep(ParsedInitData data) {
    auto account = CommonConfigration::sharedInstance().getCurrentAccountID();
    auto& old = OldResult::shared();
    std::lock_guard lock(old.mutex);
    old.kept = OldResult::Kept{std::move(data), std::move(account)};
}

}  // namespace

AppInitNetworkService::AppInitNetworkService(std::shared_ptr<NetworkConstantsProtocol> constants)
    : BaseNetworkService(std::move(constants)) {
    baseURL = networkConstants->getURL(CRMAPIs::Case::appinitdata, ApiVersion::v4);
}

void AppInitNetworkService::getAppInitData() {
    if (auto reusable = reusableResult()) {
        if (auto listener = initDataDelegate.lock()) listener->initDataParsed(reusable);
        return;
    }
    sendRequest({.params = ValueMap(), .method = HTTPMethod::post, .shouldAddOrgId = true});
}

void AppInitNetworkService::taskCompletionHandler(Data data, std::optional<URLResponse>, std::optional<std::string>,
                                                  std::optional<NetworkError> error, int) {
    auto parsed = InitDownloadParser::parseInitData(data);
    if (auto listener = initDataDelegate.lock()) listener->initDataParsed(parsed);
    if (auto handler = errorHandler.lock()) {
        // A request without a token went nowhere, and the host has heard of that already.
        bool told = error && error->kind == NetworkError::Kind::notSent;
        if (error && !told) handler->networkResponseError();
        if (!error && !parsed) handler->parsingError();
    }
    if (parsed) keep(*std::move(parsed));
}

}  // namespace tarvo
