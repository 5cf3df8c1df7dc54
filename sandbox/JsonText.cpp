#include "sandbox/JsonText.h"

namespace tarvo::sandbox {
namespace {

bool isPlain(unsigned char c) { return c >= 0x20 && c != '"' && c != '\\'; }

// The loop has no branch, since it runs over every byte of an answer.
bool isAllPlain(std::string_view text) {
    unsigned others = 0;
    for (unsigned char c : text) others += isPlain(c) ? 0 : 1;
    return others == 0;
}

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

void appendQuoted(std::string& json, std::string_view text) {
    json += '"';
    for (unsigned char c : text)
        if (isPlain(c))
            json += static_cast<char>(c);
        else
            appendEscaped(json, c);
    json += '"';
}

}  // namespace

void appendJsonText(std::string& json, std::string_view text) {
    if (!isAllPlain(text)) return appendQuoted(json, text);
    auto begin = json.size();
    json.resize(begin + text.size() + 2, '"');
    text.copy(json.data() + begin + 1, text.size());
}

}  // namespace tarvo::sandbox
