#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/operations/OperationQueue.h"
#include "tarvobase/network_layer/NetworkConstants.h"
#include "tarvobase/network_layer/ServiceRequests.h"
#include "tarvobase/usecase/ErrorProtocols.h"

namespace tarvo {

class BaseNetworkService;

/// Is notified of a service's calls, on the queue of the call: `networkCallGiven`, then `error`, or
/// `dataFromNetworkCallGivenToParser` and `dataParsed` before and after the answer's completion, which parses it. Every
/// operation is empty unless it is overridden.
class NetworkServiceDelegate : public virtual platform::Object {
public:
    virtual void networkCallGiven(BaseNetworkService& by) { static_cast<void>(by); }
    virtual void dataFromNetworkCallGivenToParser(BaseNetworkService& by) { static_cast<void>(by); }
    virtual void dataParsed(BaseNetworkService& for_) { static_cast<void>(for_); }
    virtual void error(const NetworkError& error, BaseNetworkService& inNetowrkService) {
        static_cast<void>(error), static_cast<void>(inNetowrkService);
    }
    virtual void networkCallDownloadProgress(BaseNetworkService& by, float progressPercent) {
        static_cast<void>(by), static_cast<void>(progressPercent);
    }
};

/// Base of the network services with a delegate. A subclass names its call and posts its parameters. The answer is
/// parsed in `taskCompletionHandler`, in a completion that the subclass passes, or by the caller.
///
/// A call is one attempt. Every call completes on the network queue, even if it could not be sent; the failure is then
/// a `NetworkError`. A service that has been released when its token or its answer comes does nothing more.
///
/// A service belongs to the account, organisation and database for which it was made. Once others are in force, it
/// sends nothing, and an answer that is still on its way completes as the failure `outdated`, without a body.
class BaseNetworkService : public virtual platform::Object {
public:
    explicit BaseNetworkService(std::shared_ptr<NetworkConstantsProtocol> withNetworkConstants);
    /// Makes a service of one call. Its URL is composed now.
    explicit BaseNetworkService(
        const CRMAPIs& endpoint, ApiVersion version = ApiVersion::v4,
        std::shared_ptr<NetworkConstantsProtocol> networkConstants = std::make_shared<NetworkConstants>());

    std::weak_ptr<NetworkServiceDelegate> delegate;
    std::weak_ptr<CommonErrorProtocol> errorHandler;
    std::shared_ptr<NetworkConstantsProtocol> networkConstants;
    platform::OperationQueue networkCallOperationQueue;
    std::string baseURL;
    bool shouldAddAuthtoken = true;
    std::shared_ptr<CurrentOrganisationProtocol> orgsPersistance;

    /// The account, organisation and database that the service works for.
    const Scope& scope() const { return scope_; }

    /// Returns the adapter, which is made at the first call.
    std::shared_ptr<NetworkAdapter> networkAdapter();
    void setNetworkAdapter(std::shared_ptr<NetworkAdapter> adapter) { networkAdapter_.set(std::move(adapter)); }

    /// Returns the id of the selected account, or the empty text.
    std::string currentUserBrenUID() const;

    struct Request {
        std::optional<ValueMap> params{};
        std::optional<std::string> url{};  ///< absent means `baseURL`
        bren::Headers headers{};           ///< added to those that every request has
        std::optional<Data> body{};
        std::optional<std::string> identifier{};
        NTaskPriority priority = NTaskPriority::normal;
        HTTPMethod method = HTTPMethod::post;
        bool shouldAddOrgId = false;
        /// If it is empty, `taskCompletionHandler` gets the answer.
        NetworkCompletion completionHandler{};
    };
    /// Sends a request. Without a token it is not sent, and `errorHandler` gets `noAuthtoken`.
    void sendRequest(Request request);
    /// Posts the parameters to `baseURL` for the current organisation, as most services do.
    void post(ValueMap params, NetworkCompletion completion = {});
    /// Downloads from another URL without authentication.
    void downloadPublicRequest(const std::string& baseUrl, Request request);
    void downloadRequest(Request request);

    struct AuthenticatedURL {
        URLRequest request;
        std::optional<std::string> authorization;
    };
    /// Returns the request to an address, or to `baseURL` if it is absent, with the authorization text of a token.
    /// Returns nullopt if the address is not a URL.
    std::optional<AuthenticatedURL> url(const std::optional<std::string>& authentication, HTTPMethod method,
                                        std::optional<Data> body,
                                        const std::optional<std::string>& address = std::nullopt) const;

    void progressPercentHandler(float part, std::int64_t done, std::int64_t total);

    /// Gets the answer to a request without a completion of its own. The base does nothing.
    virtual void taskCompletionHandler(NetworkAnswer answer) { static_cast<void>(answer); }

    void send(NetworkCall call) { networkAdapter()->send(std::move(call)); }
    /// Uploads with the token in the headers, or in the parameters if it is plain. Without a token it does the same as
    /// `sendRequest`.
    void upload(NetworkUpload upload);
    void download(NetworkCall call) { networkAdapter()->download(std::move(call)); }

protected:
    /// Reports a request that got no answer. A request without a token is left out, since it was reported when it was
    /// not sent.
    void reportFailure(const NetworkError& error);

private:
    enum class Transfer { send, download };
    void start(Transfer transfer, Request request);
    void startWithToken(Transfer transfer, Request request, const service::TokenAnswer& answer);
    void give(Transfer transfer, NetworkCall call);
    std::optional<AuthenticatedURL> preparedOf(const Request& request, const std::optional<std::string>& token) const;
    NetworkCompletion completionOf(Request& request);
    void reportNoToken(const std::string& user);

    const Scope scope_ = Scope::current();
    LazyNetworkAdapter networkAdapter_;
};

}  // namespace tarvo
