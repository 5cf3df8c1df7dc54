#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/Data.h"

namespace bren {

using tarvo::platform::Data;

/// Header fields in the order in which they were given; names compare without case.
class Headers {
public:
    /// One value for the name: whatever stood under it is replaced.
    void set(std::string_view name, std::string_view value);
    /// A further value for the name; both go out.
    void add(std::string_view name, std::string_view value);
    std::optional<std::string> find(std::string_view name) const;
    bool empty() const { return fields_.empty(); }
    auto begin() const { return fields_.begin(); }
    auto end() const { return fields_.end(); }
    /// Names alone, for a log line: values may be secrets.
    std::string names() const;

private:
    std::vector<std::pair<std::string, std::string>> fields_;
};

/// Whether a text is a URL that can be requested: http or https with a host.
bool isValidURL(std::string_view text);
/// The text itself when it is a URL; otherwise the text with the characters escaped that a URL must not hold.
std::string encodeURLIfNotValid(std::string_view text);
/// A URL without query and fragment, fit for a log line.
std::string withoutQuery(std::string_view url);

/// One request, prepared: what to ask, not how.
struct URLRequest {
    std::string url;
    std::string method = "GET";
    Headers headers;
    std::optional<Data> body;
    /// How long a transfer may stand still: one that still moves bytes is not cut off by it, however long it takes in
    /// all. Bounds the connection attempt too. Time spent waiting for a free place does not count.
    std::chrono::milliseconds timeout{60'000};
    /// Asked on the thread of the transfers when the request is about to go out, which may be long after it was given:
    /// requests wait for a free place. If it returns false, nothing is sent and the request fails as `outdated`. May be
    /// empty, and must not block.
    std::function<bool()> isStillWanted{};
};

/// What the server answered before its body.
struct URLResponse {
    int statusCode = 0;
    /// After redirections.
    std::string url;
    Headers headers;
};

/// Why a request has no answer.
struct NetworkError {
    /// Two kinds are for the layers above: `notSent`, the account had no authentication to send the request with, and
    /// `outdated`, another account is at work by now. `tooLarge` is a body beyond
    /// `BrenNetworkManager::setMaximumBodyKilobytes`.
    enum class Kind {
        invalidURL,
        cannotConnect,
        timeout,
        certificate,
        connectionLost,
        notSent,
        outdated,
        shutDown,
        file,
        tooLarge,
        other
    };
    Kind kind = Kind::other;
    /// Kind and host in words, no query, no header, no body.
    std::string message;
    friend bool operator==(const NetworkError&, const NetworkError&) = default;
};

std::string_view kindName(NetworkError::Kind kind);

}  // namespace bren
