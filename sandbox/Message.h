#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Value.h"

namespace tarvo::sandbox {

/// A file part of a multipart request.
struct UploadedFile {
    std::string field;
    std::string name;
    std::string contentType;
    std::string content;
};

/// A request as the calls see it: parameters of the query and of the form body together, names as they came.
struct Request {
    std::string method;
    std::string path;
    std::multimap<std::string, std::string, std::less<>> parameters;
    std::vector<UploadedFile> files;
    /// The body when it is no form.
    std::string body;
    std::string authorization;
    /// Header "X-CRM-ORG": the organisation that the client has chosen, or the empty text.
    std::string organisation;

    /// The first value of a parameter, or nothing when it is absent.
    std::optional<std::string> parameter(std::string_view name) const {
        auto found = parameters.find(name);
        return found == parameters.end() ? std::nullopt : std::optional(found->second);
    }
};

/// What a call answers: a JSON value, the JSON text that `later` writes, or bytes of its own content type when
/// `contentType` is set.
struct Reply {
    int status = 200;
    Value json;
    std::string bytes;
    std::string contentType;
    /// Writes an answer that is long. It runs once, without the server's lock, so it holds copies of what calls change.
    std::function<std::string()> later;

    static Reply writtenBy(std::function<std::string()> later) {
        Reply reply;
        reply.later = std::move(later);
        return reply;
    }
    static Reply of(Value json, int status = 200) {
        Reply reply;
        reply.status = status;
        reply.json = std::move(json);
        return reply;
    }
};

/// How much of an answer reaches the client.
enum class Delivery {
    whole,
    /// Half of the body under the length of the whole one, then the connection ends.
    half,
    /// The connection ends without a byte of an answer.
    nothing,
};

/// An answer ready for the wire.
struct Answer {
    int status = 200;
    std::string body;
    std::string contentType;
    Delivery delivery = Delivery::whole;
};

}  // namespace tarvo::sandbox
