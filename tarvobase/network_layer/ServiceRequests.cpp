#include "tarvobase/network_layer/ServiceRequests.h"

#include <atomic>

#include "platform/DispatchQueue.h"
#include "platform/Log.h"
#include "platform/ProgrammingError.h"
#include "tarvobase/configuration/CommonConfigration.h"

namespace tarvo::service {

namespace {

using TokenWork = std::function<void(Result<TokenAnswer, NetworkError>)>;

/// Runs the work once, for the token or for the end of the wait, whichever comes first.
class TokenWait {
public:
    explicit TokenWait(TokenWork work) : work_(std::move(work)) {}
    void end(Result<TokenAnswer, NetworkError> answer) {
        if (!ended_.exchange(true)) std::exchange(work_, nullptr)(std::move(answer));
    }

private:
    std::atomic<bool> ended_ = false;
    TokenWork work_;
};

const std::shared_ptr<DispatchQueue>& tokenQueue() {
    static const auto queue = DispatchQueue::concurrent("TokenQueue");
    return queue;
}

}  // namespace

std::optional<URLRequest> getURLRequest(const std::string& url, HTTPMethod method, std::optional<Data> body,
                                        const Scope& scope) {
    if (!bren::isValidURL(url)) return std::nullopt;
    auto& configuration = CommonConfigration::sharedInstance();
    URLRequest request{.url = url,
                       .method = std::string(rawText(method)),
                       .headers = {},
                       .body = std::move(body),
                       .timeout = std::chrono::seconds(60)};
    if (auto build = configuration.appBuildID.get()) request.headers.set(HEADER_APP_BUILDID, *build);
    if (!scope.organisation.empty()) request.headers.set(HEADER_ORGID, scope.organisation);
    request.isStillWanted = [scope] { return scope.isCurrent(); };
    return request;
}

void addHeaders(bren::Headers& headers, const bren::Headers& more) {
    for (auto& [name, value] : more) headers.set(name, value);
}

std::string authorizationText(AuthenticationType type, const std::string& token) {
    return type == AuthenticationType::oauth ? std::string(HEADER_VALUE_OAUTHTOKEN) + " " + token : token;
}

void authorize(NetworkUpload& upload, AuthenticationType type, const std::string& token) {
    if (auto build = CommonConfigration::sharedInstance().appBuildID.get())
        upload.headers.set(HEADER_APP_BUILDID, *build);
    if (type == AuthenticationType::oauth)
        upload.headers.set(HEADER_AUTHORIZATION, authorizationText(type, token));
    else
        upload.params.set(PARAM_AUTHTOKEN, token);
}

void addOrganisation(std::optional<ValueMap>& params, CurrentOrganisationProtocol& organisations) {
    if (!params || !CommonConfigration::sharedInstance().passOrgID.get()) return;
    if (auto id = organisations.currentOrganisationID()) params->set(PARAM_ORGID, *id);
}

NetworkError invalidURL() { return {NetworkError::Kind::invalidURL, "the text is not a URL"}; }
NetworkError notSent(std::string why) { return {NetworkError::Kind::notSent, std::move(why)}; }
NetworkError outdated() {
    return {NetworkError::Kind::outdated, "the account, organisation or database at work has changed"};
}

void appendQuery(std::string& url, const std::string& query) {
    if (query.empty()) return;
    url += url.find('?') == std::string::npos ? "?" : "&";
    url += query;
}

void withToken(const Scope& scope, TokenWork work) {
    if (!scope.isCurrent()) return work(outdated());
    auto authentication = CommonConfigration::sharedInstance().authentication.get();
    if (!authentication) {
        platform::reportProgrammingError("a request is made before authentication is set");
        return work(notSent("no authentication is configured"));
    }
    auto user = authentication->currentUser().value_or("");
    auto wait = std::make_shared<TokenWait>(std::move(work));
    auto limit = tokenQueue()->asyncAfter(tokenTimeLimit, [wait] {
        platform::log(platform::LogLevel::warning, "network", "the host gave no token in time");
        wait->end(NetworkError{NetworkError::Kind::timeout, "the host gave no token in time"});
    });
    // The host may keep the completion in the object itself, which must not keep itself alive.
    std::weak_ptr weak = authentication;
    authentication->authToken(user, [scope, wait, limit, weak, user](std::optional<std::string> token) mutable {
        limit.cancel();
        auto asked = weak.lock();
        bool isCurrent = asked && scope.isCurrent() && asked->currentUser().value_or("") == user;
        if (!isCurrent) return wait->end(outdated());
        wait->end(TokenAnswer{asked->authenticationType(), user, std::move(token)});
    });
}

NetworkCompletion guarded(const Scope& scope, NetworkCompletion completion) {
    return [scope, completion = std::move(completion)](NetworkAnswer answer) {
        if (!scope.isCurrent()) {
            auto failure = outdated();
            platform::log(platform::LogLevel::warning, "network", "dropped an answer: " + failure.message);
            answer.body = {};
            answer.response.reset();
            if (!answer.error) answer.error = std::move(failure);
        }
        if (completion) completion(std::move(answer));
    };
}

void logHeaders(const URLRequest& request) {
    platform::log(platform::LogLevel::progress, "network", "Header: " + request.headers.names());
}

}  // namespace tarvo::service
