#pragma once

#include <string>
#include <vector>

#include "bren_network/BrenNetworkManager.h"
#include "platform/Result.h"

namespace bren {

/// A request as it goes on the wire: parameters are where they belong, everything that could be wrong before the first
/// byte has been looked at.
struct PreparedRequest {
    std::string url;
    /// Host and port: requests to the same one share connections and their limit.
    std::string host;
    std::string method;
    Headers headers;
    std::optional<Data> body;
    /// Parts of a multipart form; a body is absent then.
    std::vector<std::pair<std::string, std::string>> fields;
    std::vector<BrenFileUploadInfo> files;
    std::chrono::milliseconds timeout{};
    std::function<bool()> isStillWanted;  ///< as in `URLRequest`
};

/// Takes the request out of the task. Refused are a text that is not an http or https URL, a method or header that
/// would break out of its line, and a file that cannot be read.
tarvo::Result<PreparedRequest, NetworkError> prepare(BrenNetworkManager::Task& task,
                                                     std::vector<BrenFileUploadInfo> files, bool isUpload);

/// "time-out: crm.example.com:443", or the kind alone.
NetworkError networkError(NetworkError::Kind kind, std::string_view about);

}  // namespace bren
