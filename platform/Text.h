#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Small operations on UTF-8 text that the standard library does not have.
namespace tarvo::platform::text {

/// The pieces between separators; a text without one is one piece, the empty text one empty piece.
std::vector<std::string> split(std::string_view text, std::string_view separator);
bool contains(const std::vector<std::string>& texts, std::string_view text);
std::string join(const std::vector<std::string>& pieces, std::string_view separator);

/// Without the blanks, tabs and line ends at both ends. Refers to the bytes of `text`.
std::string_view trimmed(std::string_view text);

/// A-Z to a-z, all other bytes as they are. For names and keywords, not for people's text.
std::string asciiLowercase(std::string_view text);
bool equalsIgnoringAsciiCase(std::string_view a, std::string_view b);

/// Whether the bytes are well-formed UTF-8.
bool isValidUtf8(std::string_view text);

/// A whole decimal number with an optional sign, nothing else around it; nullopt if it does not fit in 64 bits.
std::optional<std::int64_t> toInteger(std::string_view text);
/// A decimal number, fraction and exponent allowed, nothing else around it; no infinity, no NaN.
std::optional<double> toReal(std::string_view text);

/// Percent-escapes every byte that is not an ASCII letter, digit or one of "-._~".
std::string percentEscape(std::string_view text);
std::string base64(std::string_view bytes);
std::string hex(std::string_view bytes);

}  // namespace tarvo::platform::text

namespace tarvo {
namespace text = platform::text;
}
