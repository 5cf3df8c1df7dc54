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

/// How a request ended.
struct NetworkAnswer {
    Data body{};
    std::optional<URLResponse> response{};    ///< what the server said before the body
    std::optional<std::string> identifier{};  ///< as it was given with the request
    std::optional<NetworkError> error{};      ///< of the transport; a refusal of the server is a body like any other
    int taskNumber = 0;                       ///< number of the request; 0 when it could not be sent
};

/// Runs exactly once per request, on the network queue. No completion may wait for another.
using NetworkCompletion = std::function<void(NetworkAnswer answer)>;

}  // namespace tarvo
