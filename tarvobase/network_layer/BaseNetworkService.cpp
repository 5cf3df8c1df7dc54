#include "tarvobase/network_layer/BaseNetworkService.h"

#include "bren_network/BrenNetworkManager.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/configuration/CurrentOrganisation.h"

namespace tarvo {

namespace {

using service::notSent;

NetworkCall callOf(URLRequest prepared, BaseNetworkService::Request request) {
    return {.request = std::move(prepared),
            .params = std::move(request.params),
            .priority = request.priority,
            .identifier = std::move(request.identifier),
            .completionHandler = std::move(request.completionHandler)};
}

}  // namespace

BaseNetworkService::BaseNetworkService(std::shared_ptr<NetworkConstantsProtocol> withNetworkConstants)
    : networkConstants(std::move(withNetworkConstants)) {
    orgsPersistance =
        std::make_shared<CurrentOrganisationInUserDefaults>(std::make_shared<BrenUserDefaults>(scope_.account));
}

BaseNetworkService::BaseNetworkService(const CRMAPIs& endpoint, ApiVersion version,
                                       std::shared_ptr<NetworkConstantsProtocol> networkConstants)
    : BaseNetworkService(std::move(networkConstants)) {
    baseURL = this->networkConstants->getURL(endpoint, version);
}

std::shared_ptr<NetworkAdapter> BaseNetworkService::networkAdapter() {
    return networkAdapter_.getOr([]() -> std::shared_ptr<NetworkAdapter> {
        bren::BrenNetworkManager::sharedInstance().setMaximumBufferedKilobytes(100000);
        return std::make_shared<BrenNetworkManagerAdapter>();
    });
}

std::string BaseNetworkService::currentUserBrenUID() const {
    auto authentication = CommonConfigration::sharedInstance().authentication.get();
    return authentication ? authentication->currentUser().value_or("") : "";
}

void BaseNetworkService::sendRequest(Request request) { start(Transfer::send, std::move(request)); }
void BaseNetworkService::downloadRequest(Request request) { start(Transfer::download, std::move(request)); }
void BaseNetworkService::post(ValueMap params, NetworkCompletion completion) {
    sendRequest({.params = std::move(params), .shouldAddOrgId = true, .completionHandler = std::move(completion)});
}

void BaseNetworkService::downloadPublicRequest(const std::string& baseUrl, Request request) {
    request.completionHandler = completionOf(request);
    auto prepared = service::getURLRequest(baseUrl, request.method, request.body, scope_);
    if (!prepared) return completeUnsent(request.completionHandler, request.identifier, service::invalidURL());
    give(Transfer::download, callOf(*std::move(prepared), std::move(request)));
}

void BaseNetworkService::start(Transfer transfer, Request request) {
    request.completionHandler = completionOf(request);
    auto prepared = preparedOf(request, std::nullopt);
    if (!prepared) return completeUnsent(request.completionHandler, request.identifier, service::invalidURL());
    if (!shouldAddAuthtoken) return give(transfer, callOf(std::move(prepared->request), std::move(request)));
    service::withToken(scope_, [weak = platform::weakSelf(this), transfer, request](auto answer) {
        auto self = weak.lock();
        if (!self) return;
        if (!answer) return completeUnsent(request.completionHandler, request.identifier, answer.error());
        self->startWithToken(transfer, request, *answer);
    });
}

void BaseNetworkService::startWithToken(Transfer transfer, Request request, const service::TokenAnswer& answer) {
    if (!answer.token) {
        reportNoToken(answer.user);
        return completeUnsent(request.completionHandler, request.identifier, notSent("the account has no token"));
    }
    auto prepared = preparedOf(request, answer.token);
    if (!prepared) return completeUnsent(request.completionHandler, request.identifier, service::invalidURL());
    if (request.shouldAddOrgId) service::addOrganisation(request.params, *orgsPersistance);
    // A request that has a body sends its parameters in the URL.
    auto& address = prepared->request.url;
    if (request.body && request.params) {
        service::appendQuery(address, bren::BrenNetworkManager::formattedParamString(*request.params));
        request.params.reset();
    }
    if (auto domain = CommonConfigration::sharedInstance().verticalDomain.get())
        service::appendQuery(address, bren::BrenNetworkManager::formattedParamString({{"domain", *domain}}));
    service::logHeaders(prepared->request);
    auto call = callOf(std::move(prepared->request), std::move(request));
    call.authorization = std::move(prepared->authorization);
    give(transfer, std::move(call));
}

std::optional<BaseNetworkService::AuthenticatedURL> BaseNetworkService::preparedOf(
    const Request& request, const std::optional<std::string>& token) const {
    auto prepared = url(token, request.method, request.body, request.url);
    if (prepared) service::addHeaders(prepared->request.headers, request.headers);
    return prepared;
}

std::optional<BaseNetworkService::AuthenticatedURL> BaseNetworkService::url(
    const std::optional<std::string>& authentication, HTTPMethod method, std::optional<Data> body,
    const std::optional<std::string>& address) const {
    auto request = service::getURLRequest(address.value_or(baseURL), method, std::move(body), scope_);
    if (!request) return std::nullopt;
    auto asked = CommonConfigration::sharedInstance().authentication.get();
    auto type = asked ? asked->authenticationType() : AuthenticationType::oauth;
    std::optional<std::string> authorization;
    if (authentication) authorization = service::authorizationText(type, *authentication);
    return AuthenticatedURL{*std::move(request), std::move(authorization)};
}

void BaseNetworkService::give(Transfer transfer, NetworkCall call) {
    if (transfer == Transfer::send) {
        if (auto listener = delegate.lock()) listener->networkCallGiven(*this);
        return networkAdapter()->send(std::move(call));
    }
    auto weak = platform::weakSelf(this);
    call.percentHandler = [weak](float part, std::int64_t done, std::int64_t total) {
        if (auto self = weak.lock()) self->progressPercentHandler(part, done, total);
    };
    networkAdapter()->download(std::move(call));
}

NetworkCompletion BaseNetworkService::completionOf(Request& request) {
    auto weak = platform::weakSelf(this);
    auto completion = std::move(request.completionHandler);
    if (!completion)
        completion = [weak](NetworkAnswer answer) {
            if (auto self = weak.lock()) self->taskCompletionHandler(std::move(answer));
        };
    return service::guarded(scope_, [weak, completion = std::move(completion)](NetworkAnswer answer) {
        auto self = weak.lock();
        auto listener = self ? self->delegate.lock() : nullptr;
        bool isAnswered = !answer.error;
        if (listener)
            isAnswered ? listener->dataFromNetworkCallGivenToParser(*self) : listener->error(*answer.error, *self);
        completion(std::move(answer));
        if (listener && isAnswered) listener->dataParsed(*self);
    });
}

void BaseNetworkService::reportFailure(const NetworkError& error) {
    auto handler = errorHandler.lock();
    if (handler && error.kind != NetworkError::Kind::notSent) handler->networkResponseErrorWithCause(error.message);
}

void BaseNetworkService::reportNoToken(const std::string& user) {
    if (auto handler = errorHandler.lock()) handler->noAuthtoken(user);
}

void BaseNetworkService::progressPercentHandler(float part, std::int64_t, std::int64_t) {
    if (auto listener = delegate.lock()) listener->networkCallDownloadProgress(*this, part);
}

void BaseNetworkService::upload(NetworkUpload upload) {
    upload.isStillWanted = [scope = scope_] { return scope.isCurrent(); };
    upload.completionHandler = service::guarded(scope_, std::move(upload.completionHandler));
    service::withToken(scope_, [weak = platform::weakSelf(this), upload = std::move(upload)](auto answer) mutable {
        auto self = weak.lock();
        if (!self) return;
        if (!answer) return completeUnsent(upload.completionHandler, std::nullopt, answer.error());
        if (!answer->token) {
            self->reportNoToken(answer->user);
            return completeUnsent(upload.completionHandler, std::nullopt, notSent("the account has no token"));
        }
        service::authorize(upload, answer->type, *answer->token);
        self->networkAdapter()->upload(std::move(upload));
    });
}

}  // namespace tarvo
