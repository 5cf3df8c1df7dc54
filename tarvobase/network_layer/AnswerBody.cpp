#include "tarvobase/network_layer/AnswerBody.h"

#include <algorithm>
#include <string>

#include "platform/Log.h"
#include "platform/Text.h"

namespace tarvo {

namespace {

/// Returns the length of the character that begins at this place, or 0 if there is none.
std::size_t characterLength(std::string_view body, std::size_t at) {
    // The first byte says how many follow.
    auto first = static_cast<unsigned char>(body[at]);
    std::size_t length = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    return at + length <= body.size() && text::isValidUtf8(body.substr(at, length)) ? length : 0;
}

/// Returns the body with U+FFFD in place of each byte that is not part of a character; nullopt if there is none.
std::optional<platform::Data> repaired(std::string_view body) {
    if (text::isValidUtf8(body)) return std::nullopt;
    std::string valid;
    valid.reserve(body.size() + 16);
    std::size_t replaced = 0;
    for (std::size_t at = 0; at < body.size();) {
        auto length = characterLength(body, at);
        valid.append(length > 0 ? body.substr(at, length) : "\uFFFD");
        replaced += length == 0;
        at += std::max<std::size_t>(length, 1);
    }
    platform::log(platform::LogLevel::warning, "network",
                  "an answer has " + std::to_string(replaced) + " bytes that are not UTF-8: they are replaced");
    return platform::Data(std::move(valid));
}

}  // namespace

std::optional<json::Document> AnswerBody::document(const platform::Data& body) {
    return withinMemory(std::optional<json::Document>(), [&] {
        if (auto document = json::Document::parse(body)) return document;
        auto valid = repaired(body.view());
        return valid ? json::Document::parse(*valid) : std::nullopt;
    });
}

std::optional<Value> AnswerBody::value(const platform::Data& body) {
    return withinMemory(std::optional<Value>(), [&] {
        auto parsed = document(body);
        return parsed ? std::optional(parsed->root().copy()) : std::nullopt;
    });
}

void AnswerBody::logOutOfMemory() {
    platform::log(platform::LogLevel::error, "network", "memory ran out while an answer was read");
}

}  // namespace tarvo
