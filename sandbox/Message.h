#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Value.h"

namespace tarvo::sandbox {

/// Holds a file part of a multipart request.
struct UploadedFile {
    std::string field;
    std::string name;
    std::string contentType;
    std::string content;
};

/// Holds a request as the calls see it: the parameters of the query and of the form body together, with names
/// unchanged.
struct Request {
    std::string method;
    std::string path;
    std::multimap<std::string, std::string, std::less<>> parameters;
    std::vector<UploadedFile> files;
    /// The body when it is not a form.
    std::string body;
    std::string authorization;
    /// Header "X-CRM-ORG": the organisation that the client has chosen, or empty.
    std::string organisation;
    /// Header "x-transaction-id": the key of a change, the same whenever it is sent again, or empty.
    std::string transactionId;

    /// Returns the first value of a parameter, or nullopt when it is absent.
    std::optional<std::string> parameter(std::string_view name) const {
        auto found = parameters.find(name);
        return found == parameters.end() ? std::nullopt : std::optional(found->second);
    }
};

/// Holds what a call answers: a JSON value, the JSON text that `writeBody` returns, or bytes when `contentType` is set.
struct Reply {
    int status = 200;
    Value json;
    std::string bytes;
    std::string contentType;
    /// Writes a long answer. It runs once, without the server's lock, so it holds copies of whatever calls change.
    std::function<std::string()> writeBody;

    static Reply writtenBy(std::function<std::string()> writeBody) {
        Reply reply;
        reply.writeBody = std::move(writeBody);
        return reply;
    }
    static Reply of(Value json, int status = 200) {
        Reply reply;
        reply.status = status;
        reply.json = std::move(json);
        return reply;
    }
};

/// Says how much of an answer reaches the client.
enum class Delivery {
    whole,
    /// Half of the body is sent under the length of the whole one, then the connection ends.
    half,
    /// The connection ends before a byte of the answer is sent.
    none,
};

/// Holds an answer that is ready for the wire.
struct Answer {
    int status = 200;
    std::string body;
    std::string contentType;
    Delivery delivery = Delivery::whole;
};

}  // namespace tarvo::sandbox
