#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/Result.h"
#include "sandbox/Message.h"

namespace tarvo::sandbox {

/// Serves HTTP over TLS on the loopback addresses, both families where the machine has both.
class HttpsServer {
public:
    using Handler = std::function<Answer(const Request&)>;

    /// `serverFile` holds key and certificate. The handler is called on many threads at once.
    HttpsServer(std::string serverFile, Handler handler);
    ~HttpsServer();
    HttpsServer(const HttpsServer&) = delete;
    HttpsServer& operator=(const HttpsServer&) = delete;

    /// Listens and returns the port; 0 picks a free one. A failure says why the server cannot listen.
    Result<int, std::string> start(int port);
    /// Ends all connections and returns once no handler runs. May be called twice.
    void stop();

private:
    class Listener;
    const std::string serverFile_;
    const Handler handler_;
    std::unique_ptr<Listener> v4_;
    std::unique_ptr<Listener> v6_;
};

}  // namespace tarvo::sandbox
