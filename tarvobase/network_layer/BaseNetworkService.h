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

/// Hears of a service's calls, on the queue of the call. Every operation is empty unless overridden.
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

/// Base of the network services with a delegate. A subclass names its call, posts its parameters, and parses the answer
/// in `taskCompletionHandler` or in the completion that it gives, unless its caller does.
///
/// A call is one attempt. Every call completes, on the network queue, also one that could not be sent; then the failure
/// is a `NetworkError` and the host hears what is told at each operation. A service that has been let go when its token
/// or its answer comes does nothing more.
class BaseNetworkService : public virtual platform::Object {
public:
    explicit BaseNetworkService(std::shared_ptr<NetworkConstantsProtocol> withNetworkConstants);
    /// A service of one call, whose address is settled now.
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

    /// Made on first read.
    std::shared_ptr<NetworkAdapter> networkAdapter();
    void setNetworkAdapter(std::shared_ptr<NetworkAdapter> adapter) { networkAdapter_.set(std::move(adapter)); }

    /// The selected account, or the empty text.
    std::string currentUserBrenUID() const;

    struct Request {
        std::optional<ValueMap> params{};
        std::optional<Data> body{};
        std::optional<std::string> identifier{};
        NTaskPriority priority = NTaskPriority::normal;
        HTTPMethod method = HTTPMethod::post;
        bool shouldAddOrgId = false;
        /// Absent means `taskCompletionHandler`.
        NetworkCompletion completionHandler{};
    };
    /// Sends to `baseURL`. Without a token the request is not sent and `errorHandler` hears `noAuthtoken`.
    void sendRequest(Request request);
    /// Posts the parameters to `baseURL` for the current organisation, as most services do.
    void post(ValueMap params, NetworkCompletion completion = {});
    /// Downloads from another address without authentication.
    void downloadPublicRequest(const std::string& baseUrl, Request request);
    void downloadRequest(Request request);

    struct AuthenticatedURL {
        URLRequest request;
        std::optional<std::string> authorization;
    };
    /// The request to `baseURL` with the text for a token; nothing when `baseURL` is no URL.
    std::optional<AuthenticatedURL> url(const std::optional<std::string>& authentication, HTTPMethod method,
                                        std::optional<Data> body) const;

    void progressDataHandler(Data piece, double part);
    void progressPercentHandler(float part, std::int64_t done, std::int64_t total);

    /// The answer of a request without a handler of its own. The base does nothing.
    virtual void taskCompletionHandler(NetworkAnswer answer) { static_cast<void>(answer); }

    void send(NetworkCall call) { networkAdapter()->send(std::move(call)); }
    /// With the token in the headers, or in the parameters for a plain one. Without a token as for `sendRequest`.
    void upload(NetworkUpload upload);
    void download(NetworkCall call) { networkAdapter()->download(std::move(call)); }

protected:
    /// Reports a request that got no answer. One that had no token went nowhere, and was reported then.
    void reportFailure(const NetworkError& error);

private:
    enum class Transfer { send, download };
    void start(Transfer transfer, Request request);
    void startWithToken(Transfer transfer, Request request, const std::string& user,
                        const std::optional<std::string>& token);
    void give(Transfer transfer, NetworkCall call);
    NetworkCompletion completionOf(Request& request);
    void reportNoToken(const std::string& user);

    LazyNetworkAdapter networkAdapter_;
};

}  // namespace tarvo
