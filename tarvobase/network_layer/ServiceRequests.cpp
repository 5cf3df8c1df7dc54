#include "tarvobase/network_layer/ServiceRequests.h"

#include "platform/Log.h"
#include "tarvobase/configuration/CommonConfigration.h"

namespace tarvo::service {

std::optional<URLRequest> getURLRequest(const std::string& url, HTTPMethod method, std::optional<Data> body) {
    if (!bren::isValidURL(url)) return std::nullopt;
    auto& configuration = CommonConfigration::sharedInstance();
    URLRequest request{.url = url,
                       .method = std::string(rawText(method)),
                       .headers = {},
                       .body = std::move(body),
                       .timeout = std::chrono::seconds(60)};
    if (auto build = configuration.appBuildID.get()) request.headers.set(HEADER_APP_BUILDID, *build);
    if (auto organisation = configuration.currentOrgID.get(); !organisation.empty())
        request.headers.set(HEADER_ORGID, organisation);
    return request;
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

NetworkError invalidURL() { return {NetworkError::Kind::invalidURL, "the text is no URL"}; }
NetworkError notSent(std::string why) { return {NetworkError::Kind::notSent, std::move(why)}; }

void appendQuery(std::string& url, const std::string& query) {
    if (query.empty()) return;
    url += url.find('?') == std::string::npos ? "?" : "&";
    url += query;
}

bool withToken(
    std::function<void(AuthenticationProtocol&, const std::string&, const std::optional<std::string>&)> work) {
    auto authentication = CommonConfigration::sharedInstance().authentication.get();
    if (!authentication) return false;
    auto user = authentication->currentUser().value_or("");
    authentication->authToken(user, [authentication, user, work = std::move(work)](std::optional<std::string> token) {
        work(*authentication, user, token);
    });
    return true;
}

void logHeaders(const URLRequest& request) {
    platform::log(platform::LogLevel::progress, "network", "Header: " + request.headers.names());
}

}  // namespace tarvo::service
