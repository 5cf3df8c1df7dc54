#include "platform/Text.h"

#include <simdjson.h>

#include <charconv>
#include <cmath>

namespace tarvo::platform::text {

namespace {

template <class Number>
std::optional<Number> wholeText(std::string_view text) {
    Number number{};
    if (text.starts_with('+') && text.size() > 1 && text[1] != '-') text.remove_prefix(1);
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

}  // namespace

std::vector<std::string> split(std::string_view text, std::string_view separator) {
    std::vector<std::string> pieces;
    if (separator.empty()) return {std::string(text)};
    for (std::size_t at; (at = text.find(separator)) != std::string_view::npos;) {
        pieces.emplace_back(text.substr(0, at));
        text.remove_prefix(at + separator.size());
    }
    pieces.emplace_back(text);
    return pieces;
}

bool contains(const std::vector<std::string>& texts, std::string_view text) {
    return std::find(texts.begin(), texts.end(), text) != texts.end();
}

std::string join(const std::vector<std::string>& pieces, std::string_view separator) {
    std::string joined;
    for (auto& piece : pieces) {
        if (&piece != &pieces.front()) joined += separator;
        joined += piece;
    }
    return joined;
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string asciiLowercase(std::string_view text) {
    std::string lowered(text);
    for (auto& c : lowered) c = lower(c);
    return lowered;
}

bool equalsIgnoringAsciiCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return lower(x) == lower(y); });
}

bool isValidUtf8(std::string_view text) { return simdjson::validate_utf8(text.data(), text.size()); }

std::optional<std::int64_t> toInteger(std::string_view text) { return wholeText<std::int64_t>(text); }

std::optional<double> toReal(std::string_view text) {
    auto real = wholeText<double>(text);
    return real && std::isfinite(*real) ? real : std::nullopt;
}

std::string percentEscape(std::string_view text) {
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string escaped;
    escaped.reserve(text.size());
    for (unsigned char c : text) {
        bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
                     c == '.' || c == '_' || c == '~';
        if (plain) {
            escaped += static_cast<char>(c);
        } else {
            escaped += '%';
            escaped += digits[c >> 4];
            escaped += digits[c & 15];
        }
    }
    return escaped;
}

std::string base64(std::string_view bytes) {
    static constexpr char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    out.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        auto byteAt = [&](std::size_t at) { return at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0u; };
        unsigned group = byteAt(i) << 16 | byteAt(i + 1) << 8 | byteAt(i + 2);
        out += digits[group >> 18];
        out += digits[group >> 12 & 63];
        out += i + 1 < bytes.size() ? digits[group >> 6 & 63] : '=';
        out += i + 2 < bytes.size() ? digits[group & 63] : '=';
    }
    return out;
}

std::string hex(std::string_view bytes) {
    static constexpr char digits[] = "0123456789abcdef";
    std::string out;
    out.reserve(bytes.size() * 2);
    for (unsigned char c : bytes) {
        out += digits[c >> 4];
        out += digits[c & 15];
    }
    return out;
}

}  // namespace tarvo::platform::text
