#pragma once

#include <functional>
#include <optional>
#include <string>

#include "bren_network/URLRequest.h"
#include "platform/Data.h"

namespace tarvo {

using bren::NetworkError;
using bren::URLRequest;
using bren::URLResponse;
using platform::Data;

/// The end of a request.
struct NetworkAnswer {
    Data body{};
    std::optional<URLResponse> response{};    ///< the status and headers of the server
    std::optional<std::string> identifier{};  ///< the identifier of the request
    std::optional<NetworkError>
        error{};         ///< a failure of the transport; a refusal of the server is a body like any other
    int taskNumber = 0;  ///< the number of the request; 0 if it could not be sent
};

/// The callback for the end of a request. It runs exactly once per request, on the network queue. No completion may
/// wait for another one.
using NetworkCompletion = std::function<void(NetworkAnswer answer)>;

}  // namespace tarvo
