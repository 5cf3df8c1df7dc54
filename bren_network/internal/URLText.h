#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace bren {

/// Host and port of a URL in lower case ("crm.example.com:443"), which names the place that requests share
/// connections to. Returns nullopt if the text is not a URL that can be requested.
std::optional<std::string> hostAndPort(std::string_view url);

/// The URL with a further piece of query text after the query that it has, before its fragment.
std::string appendQuery(std::string_view url, std::string_view query);

}  // namespace bren
