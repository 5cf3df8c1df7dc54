#include "bren_network/internal/Parameters.h"

#include "bren_network/BrenNetworkManager.h"
#include "platform/Json.h"
#include "platform/Log.h"
#include "platform/Text.h"

namespace bren {

using tarvo::Value;
using tarvo::ValueKind;
namespace text = tarvo::platform::text;

namespace {

std::optional<std::string> plainText(const Value& value) {
    switch (value.kind()) {
        case ValueKind::null:
            return std::string();
        case ValueKind::bytes:
            return text::base64(value.asBytes()->bytes);
        case ValueKind::text:
        case ValueKind::boolean:
            return value.toText();
        default:
            return tarvo::json::write(value);
    }
}

}  // namespace

std::vector<std::pair<std::string, std::string>> plainTexts(const tarvo::ValueMap& params) {
    std::vector<std::pair<std::string, std::string>> texts;
    for (auto& [name, value] : params) {
        if (auto plain = plainText(value))
            texts.emplace_back(name, std::move(*plain));
        else
            tarvo::platform::log(
                tarvo::platform::LogLevel::warning, "network",
                "A request parameter without a text form is left out, kind " + std::string(kindName(value.kind())));
    }
    return texts;
}

std::string BrenNetworkManager::formattedParamString(const tarvo::ValueMap& params) {
    std::string formatted;
    for (auto& [name, value] : plainTexts(params)) {
        if (!formatted.empty()) formatted += '&';
        formatted += text::percentEscape(name) + '=' + text::percentEscape(value);
    }
    return formatted;
}

}  // namespace bren
