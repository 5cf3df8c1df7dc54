#include "sandbox/calls/CallParameters.h"

#include "platform/Json.h"
#include "platform/Text.h"

namespace tarvo::sandbox::calls {

std::optional<std::vector<std::string>> listIn(const std::string& parameter) {
    auto parsed = json::parse(parameter);
    if (!parsed || !parsed->asList()) return std::nullopt;
    std::vector<std::string> texts;
    for (const auto& item : *parsed->asList()) texts.push_back(item.textOr(""));
    return texts;
}

std::vector<std::string> namesIn(const std::string& parameter) {
    if (parameter.empty()) return {};
    auto list = listIn(parameter);
    return list ? *list : text::split(parameter, ",");
}

}  // namespace tarvo::sandbox::calls
