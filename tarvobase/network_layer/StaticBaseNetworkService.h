#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/operations/OperationQueue.h"
#include "tarvobase/network_layer/NetworkConstants.h"
#include "tarvobase/network_layer/ServiceRequests.h"
#include "tarvobase/usecase/ErrorProtocols.h"

namespace tarvo {

/// Base of the network services that keep no state: the caller passes the URL and a callback. Every call completes
/// exactly once on the network queue, even if it could not be sent. Without a token a request is sent without
/// authorization; an upload is not sent, and `errorHandler` gets `noAuthtoken`.
///
/// A service belongs to the account, organisation and database for which it was made. Once others are in force, it
/// sends nothing, and an answer that is still on its way completes as the failure `outdated`, without a body.
class StaticBaseNetworkService : public virtual platform::Object {
public:
    explicit StaticBaseNetworkService(
        std::shared_ptr<NetworkConstantsProtocol> networkConstants = std::make_shared<NetworkConstants>());

    std::shared_ptr<NetworkConstantsProtocol> networkConstants;
    platform::OperationQueue networkCallOperationQueue;
    bool shouldAddAuthtoken = true;
    std::shared_ptr<CurrentOrganisationProtocol> orgsPersistance;
    std::weak_ptr<CommonErrorProtocol> errorHandler;

    /// The account, organisation and database that the service works for.
    const Scope& scope() const { return scope_; }

    /// Returns the URL of requests that do not name one.
    virtual std::string baseURL() const { return {}; }

    std::shared_ptr<NetworkAdapter> networkAdapter();
    void setNetworkAdapter(std::shared_ptr<NetworkAdapter> adapter) { networkAdapter_.set(std::move(adapter)); }

    struct Request {
        std::optional<ValueMap> params{};
        std::optional<std::string> url{};  ///< absent means `baseURL`
        std::optional<Data> body{};
        std::optional<std::string> identifier{};
        NTaskPriority priority = NTaskPriority::normal;
        HTTPMethod method = HTTPMethod::post;
        bool shouldAddOrgId = false;
        PercentHandler percentHandler{};
        NetworkCompletion completionHandler{};
    };
    void sendRequest(Request request);
    /// Posts the parameters to `baseURL` for the current organisation, as most services do.
    void post(ValueMap params, NetworkCompletion completion);
    void downloadRequest(Request request);

    struct Upload {
        std::optional<std::string> url{};
        ValueMap params{};
        bren::Headers headers{};  ///< added to those that every upload has
        std::string fileURL;      ///< path of the file
        std::string fileParamName;
        NTaskPriority priority = NTaskPriority::normal;
        bool shouldAddOrgId = false;
        PercentHandler percentHandler{};
        NetworkCompletion completionHandler{};
    };
    void uploadRequest(Upload upload);

    struct AuthenticatedURL {
        URLRequest request;
        std::optional<std::string> authorization;
    };
    /// Returns the request with a token: in the authorization text, or in the URL if the token is plain. Returns
    /// nullopt if `urlRequest` is not a URL.
    std::optional<AuthenticatedURL> url(const std::string& urlRequest, const std::optional<std::string>& authentication,
                                        HTTPMethod method, std::optional<Data> body) const;

    void send(NetworkCall call) { networkAdapter()->send(std::move(call)); }
    void upload(NetworkUpload upload) { networkAdapter()->upload(std::move(upload)); }
    void download(NetworkCall call) { networkAdapter()->download(std::move(call)); }

private:
    enum class Transfer { send, download };
    void start(Transfer transfer, Request request);
    void startWithToken(Transfer transfer, Request request, const std::optional<std::string>& token);
    void give(Transfer transfer, NetworkCall call);

    const Scope scope_ = Scope::current();
    LazyNetworkAdapter networkAdapter_;
};

}  // namespace tarvo
