#include "bren_network/internal/URLText.h"

#include <curl/curl.h>

#include <algorithm>
#include <memory>

#include "bren_network/URLRequest.h"
#include "platform/Text.h"

namespace bren {

namespace {

using Parsed = std::unique_ptr<CURLU, decltype(&curl_url_cleanup)>;

bool isHexDigit(char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

bool isLetterOrDigit(char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

/// Whether the character at a place may stand in a URL as it is. Brackets may stand around a host alone, a percent
/// sign only before two hexadecimal digits, a number sign once.
class LegalCharacters {
public:
    explicit LegalCharacters(std::string_view url)
        : url_(url),
          authorityEnd_(std::min(url.find_first_of("/?#", std::min(url.find("://"), url.size() - 1) + 3), url.size())),
          fragment_(url.find('#')) {}

    bool isLegal(std::size_t at) const {
        char c = url_[at];
        if (isLetterOrDigit(c)) return true;
        if (c == '[' || c == ']') return at < authorityEnd_;
        if (c == '%') return at + 2 < url_.size() && isHexDigit(url_[at + 1]) && isHexDigit(url_[at + 2]);
        if (c == '#') return at == fragment_;
        return c != '\0' && std::string_view("-._~:/?@!$&'()*+,;=").find(c) != std::string_view::npos;
    }

private:
    std::string_view url_;
    std::size_t authorityEnd_;
    std::size_t fragment_;
};

Parsed parse(std::string_view text) {
    Parsed url(nullptr, &curl_url_cleanup);
    if (text.empty()) return url;
    LegalCharacters characters(text);
    for (std::size_t at = 0; at < text.size(); ++at)
        if (!characters.isLegal(at)) return url;
    url.reset(curl_url());
    if (url && curl_url_set(url.get(), CURLUPART_URL, std::string(text).c_str(), CURLU_NON_SUPPORT_SCHEME) != CURLUE_OK)
        url.reset();
    return url;
}

std::string part(const Parsed& url, CURLUPart which, unsigned flags = 0) {
    char* found = nullptr;
    if (curl_url_get(url.get(), which, &found, flags) != CURLUE_OK) return {};
    std::string copy(found);
    curl_free(found);
    return copy;
}

}  // namespace

std::optional<std::string> hostAndPort(std::string_view text) {
    // The parser would take "https:///path" for the host "path".
    auto authority = text.find("://");
    if (authority == text.npos || text.substr(authority + 3).starts_with('/')) return std::nullopt;
    auto url = parse(text);
    if (!url) return std::nullopt;
    auto scheme = part(url, CURLUPART_SCHEME);
    auto host = part(url, CURLUPART_HOST);
    if ((scheme != "http" && scheme != "https") || host.empty()) return std::nullopt;
    return tarvo::platform::text::asciiLowercase(host) + ":" + part(url, CURLUPART_PORT, CURLU_DEFAULT_PORT);
}

bool isValidURL(std::string_view text) { return hostAndPort(text).has_value(); }

std::string encodeURLIfNotValid(std::string_view text) {
    if (text.empty() || isValidURL(text)) return std::string(text);
    LegalCharacters characters(text);
    std::string encoded;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (characters.isLegal(at))
            encoded += text[at];
        else
            encoded += tarvo::platform::text::percentEscape(text.substr(at, 1));
    }
    return encoded;
}

std::string withoutQuery(std::string_view url) {
    url = url.substr(0, url.find_first_of("?#"));
    auto scheme = url.find("://");
    auto authority = scheme == std::string_view::npos ? 0 : scheme + 3;
    auto user = url.substr(0, url.find('/', authority)).rfind('@');
    if (user == std::string_view::npos || user < authority) return std::string(url);
    return std::string(url.substr(0, authority)) + std::string(url.substr(user + 1));
}

std::string appendQuery(std::string_view url, std::string_view query) {
    if (query.empty()) return std::string(url);
    auto fragmentAt = std::min(url.find('#'), url.size());
    std::string appended(url.substr(0, fragmentAt));
    auto queryAt = appended.find('?');
    if (queryAt == std::string::npos)
        appended += '?';
    else if (appended.back() != '?' && appended.back() != '&')
        appended += '&';
    return appended.append(query).append(url.substr(fragmentAt));
}

}  // namespace bren
