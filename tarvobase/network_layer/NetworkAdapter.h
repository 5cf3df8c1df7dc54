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

/// Part done from 0 to 1, bytes done, bytes in all (-1 when unknown).
using PercentHandler = std::function<void(float part, std::int64_t done, std::int64_t total)>;
/// A piece of the body, part done from 0 to 1.
using ProgressHandler = std::function<void(Data piece, double part)>;

/// One request and who hears of it. Every handler may be absent.
struct NetworkCall {
    URLRequest request;
    std::optional<std::string> authorization{};  ///< value of the "Authorization" header
    std::optional<ValueMap> params{};
    NTaskPriority priority = NTaskPriority::normal;
    std::optional<std::string> identifier{};
    PercentHandler percentHandler{};
    ProgressHandler progressHandler{};
    NetworkCompletion completionHandler{};
};

/// A file that goes up as a multipart form.
struct NetworkUpload {
    std::string url;
    bren::Headers headers{};
    ValueMap params{};
    std::variant<std::string, Data> source;  ///< path of a file, or the bytes themselves
    std::string fileParamName;
    std::string fileName;
    std::string fileType{};
    PercentHandler percentHandler{};
    ProgressHandler progressHandler{};
    NetworkCompletion completionHandler{};
};

/// The seam between the network services and the HTTP library.
class NetworkAdapter : public virtual platform::Object {
public:
    virtual void send(NetworkCall call) = 0;
    /// Each header replaces what the request has under its name; no authorization is added.
    virtual void sendWithHeaders(NetworkCall call, const bren::Headers& headers);
    /// Builds the request from a text; one that is no URL is logged and completes with a failure.
    virtual void sendUrl(const std::string& url, HTTPMethod method, NetworkCall call,
                         const bren::Headers& headers = {});

    virtual void upload(NetworkUpload upload) = 0;

    virtual void download(NetworkCall call) = 0;
    virtual void downloadUrl(const std::string& url, HTTPMethod method, NetworkCall call);
};

/// Runs a completion with a failure that came before anything was sent, later and on the queue where completions run.
void completeUnsent(const NetworkCompletion& completion, const std::optional<std::string>& identifier,
                    NetworkError error);

/// The adapter over `bren::BrenNetworkManager`. Stateless.
class BrenNetworkManagerAdapter final : public NetworkAdapter {
public:
    void send(NetworkCall call) override;
    void upload(NetworkUpload upload) override;
    void download(NetworkCall call) override;
};

}  // namespace tarvo
