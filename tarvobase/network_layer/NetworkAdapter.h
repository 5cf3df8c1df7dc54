#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <variant>

#include "platform/Object.h"
#include "platform/Value.h"
#include "tarvobase/network_layer/CRMAPIs.h"
#include "tarvobase/network_layer/NetworkAnswer.h"

namespace tarvo {

/// The fraction done from 0 to 1, the bytes done, and the bytes in all (-1 if unknown).
using PercentHandler = std::function<void(float part, std::int64_t done, std::int64_t total)>;
/// A piece of the body, and the fraction done from 0 to 1.
using ProgressHandler = std::function<void(Data piece, double part)>;

/// A request and its callbacks, each of which may be empty.
struct NetworkCall {
    URLRequest request;
    std::optional<std::string> authorization{};  ///< the value of the "Authorization" header
    std::optional<ValueMap> params{};
    NTaskPriority priority = NTaskPriority::normal;
    std::optional<std::string> identifier{};
    PercentHandler percentHandler{};
    ProgressHandler progressHandler{};
    NetworkCompletion completionHandler{};
};

/// A file that is uploaded as a multipart form.
struct NetworkUpload {
    std::string url;
    bren::Headers headers{};
    ValueMap params{};
    std::variant<std::string, Data> source;  ///< the path of a file, or the bytes themselves
    std::string fileParamName;
    std::string fileName;
    std::string fileType{};
    NTaskPriority priority = NTaskPriority::normal;
    PercentHandler percentHandler{};
    ProgressHandler progressHandler{};
    NetworkCompletion completionHandler{};
    std::function<bool()> isStillWanted{};  ///< as in `URLRequest`
};

/// The interface between the network services and the HTTP library.
class NetworkAdapter : public virtual platform::Object {
public:
    virtual void send(NetworkCall call) = 0;
    /// Sends the request with other headers. Each replaces the request's header of the same name. No authorization is
    /// added.
    virtual void sendWithHeaders(NetworkCall call, const bren::Headers& headers);
    /// Makes the request from a URL. A text that is not a URL is logged and completes with a failure.
    virtual void sendUrl(const std::string& url, HTTPMethod method, NetworkCall call,
                         const bren::Headers& headers = {});

    virtual void upload(NetworkUpload upload) = 0;

    virtual void download(NetworkCall call) = 0;
    virtual void downloadUrl(const std::string& url, HTTPMethod method, NetworkCall call);
};

/// Runs the completion of a request that was not sent, with the reason. It runs later, on the queue of completions.
void completeUnsent(const NetworkCompletion& completion, const std::optional<std::string>& identifier,
                    NetworkError error);

/// The adapter over `bren::BrenNetworkManager`. It has no state.
class BrenNetworkManagerAdapter final : public NetworkAdapter {
public:
    void send(NetworkCall call) override;
    void upload(NetworkUpload upload) override;
    void download(NetworkCall call) override;
};

}  // namespace tarvo
