#include "tarvobase/network_layer/StaticBaseNetworkService.h"

#include <filesystem>

#include "bren_network/BrenNetworkManager.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/configuration/CurrentOrganisation.h"

namespace tarvo {

StaticBaseNetworkService::StaticBaseNetworkService(std::shared_ptr<NetworkConstantsProtocol> networkConstants)
    : networkConstants(std::move(networkConstants)) {
    orgsPersistance =
        std::make_shared<CurrentOrganisationInUserDefaults>(std::make_shared<BrenUserDefaults>(scope_.account));
}

std::shared_ptr<NetworkAdapter> StaticBaseNetworkService::networkAdapter() {
    return networkAdapter_.getOr(
        []() -> std::shared_ptr<NetworkAdapter> { return std::make_shared<BrenNetworkManagerAdapter>(); });
}

void StaticBaseNetworkService::sendRequest(Request request) { start(Transfer::send, std::move(request)); }
void StaticBaseNetworkService::downloadRequest(Request request) { start(Transfer::download, std::move(request)); }

void StaticBaseNetworkService::post(ValueMap params, NetworkCompletion completion) {
    sendRequest({.params = std::move(params), .shouldAddOrgId = true, .completionHandler = std::move(completion)});
}

void StaticBaseNetworkService::start(Transfer transfer, Request request) {
    if (!request.url) request.url = baseURL();
    request.completionHandler = service::guarded(scope_, std::move(request.completionHandler));
    if (!shouldAddAuthtoken) return startWithToken(transfer, std::move(request), std::nullopt);
    service::withToken(scope_, [weak = platform::weakSelf(this), transfer, request](auto answer) {
        auto self = weak.lock();
        if (!self) return;
        if (!answer) return completeUnsent(request.completionHandler, request.identifier, answer.error());
        self->startWithToken(transfer, request, answer->token);
    });
}

void StaticBaseNetworkService::startWithToken(Transfer transfer, Request request,
                                              const std::optional<std::string>& token) {
    auto prepared = url(*request.url, token, request.method, request.body);
    if (!prepared) return completeUnsent(request.completionHandler, request.identifier, service::invalidURL());
    if (token) {
        if (request.shouldAddOrgId) service::addOrganisation(request.params, *orgsPersistance);
        if (request.body && request.params && !request.params->empty()) {
            service::appendQuery(prepared->request.url,
                                 bren::BrenNetworkManager::formattedParamString(*request.params));
            request.params.reset();
        }
        service::logHeaders(prepared->request);
    }
    give(transfer, {.request = std::move(prepared->request),
                    .authorization = std::move(prepared->authorization),
                    .params = std::move(request.params),
                    .priority = request.priority,
                    .identifier = std::move(request.identifier),
                    .percentHandler = std::move(request.percentHandler),
                    .completionHandler = std::move(request.completionHandler)});
}

std::optional<StaticBaseNetworkService::AuthenticatedURL> StaticBaseNetworkService::url(
    const std::string& urlRequest, const std::optional<std::string>& authentication, HTTPMethod method,
    std::optional<Data> body) const {
    auto request = service::getURLRequest(urlRequest, method, std::move(body), scope_);
    if (!request) return std::nullopt;
    if (!authentication) return AuthenticatedURL{*std::move(request), std::nullopt};
    auto asked = CommonConfigration::sharedInstance().authentication.get();
    if (asked && asked->authenticationType() == AuthenticationType::plain) {
        service::appendQuery(request->url, bren::BrenNetworkManager::formattedParamString(
                                               {{std::string(service::PARAM_AUTHTOKEN), *authentication}}));
        return AuthenticatedURL{*std::move(request), std::nullopt};
    }
    return AuthenticatedURL{*std::move(request),
                            service::authorizationText(AuthenticationType::oauth, *authentication)};
}

void StaticBaseNetworkService::give(Transfer transfer, NetworkCall call) {
    if (transfer == Transfer::send)
        networkAdapter()->send(std::move(call));
    else
        networkAdapter()->download(std::move(call));
}

void StaticBaseNetworkService::uploadRequest(Upload upload) {
    upload.completionHandler = service::guarded(scope_, std::move(upload.completionHandler));
    service::withToken(scope_, [weak = platform::weakSelf(this), upload = std::move(upload)](auto answer) {
        auto self = weak.lock();
        if (!self) return;
        if (!answer) return completeUnsent(upload.completionHandler, std::nullopt, answer.error());
        if (!answer->token) {
            if (auto handler = self->errorHandler.lock()) handler->noAuthtoken(answer->user);
            return completeUnsent(upload.completionHandler, std::nullopt, service::notSent("the account has no token"));
        }
        std::optional<ValueMap> params = upload.params;
        if (upload.shouldAddOrgId) service::addOrganisation(params, *self->orgsPersistance);
        NetworkUpload file{.url = upload.url.value_or(self->baseURL()),
                           .headers = upload.headers,
                           .params = *std::move(params),
                           .source = upload.fileURL,
                           .fileParamName = upload.fileParamName,
                           .fileName = std::filesystem::path(upload.fileURL).filename().string(),
                           .priority = upload.priority,
                           .percentHandler = upload.percentHandler,
                           .completionHandler = upload.completionHandler,
                           .isStillWanted = [scope = self->scope_] { return scope.isCurrent(); }};
        service::authorize(file, answer->type, *answer->token);
        self->networkAdapter()->upload(std::move(file));
    });
}

}  // namespace tarvo
