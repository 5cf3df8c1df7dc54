#include "bren_network/URLRequest.h"

#include <algorithm>

#include "platform/Text.h"

namespace bren {

namespace text = tarvo::platform::text;

void Headers::set(std::string_view name, std::string_view value) {
    std::erase_if(fields_, [&](auto& field) { return text::equalsIgnoringAsciiCase(field.first, name); });
    add(name, value);
}

void Headers::add(std::string_view name, std::string_view value) { fields_.emplace_back(name, value); }

std::optional<std::string> Headers::find(std::string_view name) const {
    for (auto& [known, value] : fields_)
        if (text::equalsIgnoringAsciiCase(known, name)) return value;
    return std::nullopt;
}

std::string Headers::names() const {
    std::vector<std::string> names;
    for (auto& [name, value] : fields_) names.push_back(name);
    return text::join(names, ", ");
}

std::string_view kindName(NetworkError::Kind kind) {
    switch (kind) {
        case NetworkError::Kind::invalidURL:
            return "invalid URL";
        case NetworkError::Kind::cannotConnect:
            return "cannot connect";
        case NetworkError::Kind::timeout:
            return "time-out";
        case NetworkError::Kind::certificate:
            return "certificate not trusted";
        case NetworkError::Kind::connectionLost:
            return "connection lost";
        case NetworkError::Kind::notSent:
            return "not sent";
        case NetworkError::Kind::outdated:
            return "the account at work has changed";
        case NetworkError::Kind::shutDown:
            return "shut down";
        case NetworkError::Kind::file:
            return "file cannot be read";
        case NetworkError::Kind::tooLarge:
            return "answer too large";
        case NetworkError::Kind::other:
            break;
    }
    return "other failure";
}

}  // namespace bren
