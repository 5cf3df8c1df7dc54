#include "sandbox/JsonText.h"

namespace tarvo::sandbox {
namespace {

bool isPlain(unsigned char c) { return c >= 0x20 && c != '"' && c != '\\'; }

void appendEscaped(std::string& json, unsigned char c) {
    constexpr std::string_view digits = "0123456789abcdef";
    if (c == '"' || c == '\\') {
        json += '\\';
        json += static_cast<char>(c);
    } else if (c == '\n') {
        json += "\\n";
    } else {
        json += "\\u00";
        json += digits[c >> 4];
        json += digits[c & 15];
    }
}

}  // namespace

void appendJsonText(std::string& json, std::string_view text) {
    json += '"';
    std::size_t begin = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        auto c = static_cast<unsigned char>(text[i]);
        if (isPlain(c)) continue;
        json.append(text, begin, i - begin);
        appendEscaped(json, c);
        begin = i + 1;
    }
    json.append(text, begin);
    json += '"';
}

}  // namespace tarvo::sandbox
