#include "tarvobase/network_layer/Parser.h"

#include "tarvobase/network_layer/AnswerBody.h"
#include "tarvobase/network_layer/TypedReads.h"

namespace tarvo {

std::optional<std::vector<ValueMap>> listOfMaps(const Value* value) {
    auto list = value ? value->asList() : nullptr;
    if (!list) return std::nullopt;
    std::vector<ValueMap> maps;
    maps.reserve(list->size());
    for (auto& item : *list) {
        if (!item.asMap()) return std::nullopt;
        maps.push_back(*item.asMap());
    }
    return maps;
}

namespace {

enum class Times { read, leaveOut };

std::optional<ParsedJSON> parsed(const platform::Data& data, Times times) {
    auto document = AnswerBody::value(data);
    auto body = document ? document->asMap() : nullptr;
    if (!body) return std::nullopt;
    ParsedJSON answer;
    if ((answer.error = readKey<ValueList>(*body, "error"))) return answer;
    auto responseValue = body->find("response");
    auto response = responseValue ? responseValue->asMap() : nullptr;
    if (!response) return std::nullopt;
    answer.result = listOfMaps(response->find("result"));
    if (!answer.result) return std::nullopt;
    auto info = response->find("responseInfo");
    if (times == Times::read && info && info->asMap()) {
        answer.serverTime = readKey<std::uint64_t>(*info->asMap(), "servertime").value_or(0);
        answer.responseTime = readKey<std::uint64_t>(*info->asMap(), "responsetime").value_or(0);
    }
    return answer;
}

}  // namespace

std::optional<ParsedJSON> Parser::getJSONData(const platform::Data& data) { return parsed(data, Times::read); }
std::optional<ParsedJSON> Parser::getOldJSONData(const platform::Data& data) { return parsed(data, Times::leaveOut); }

}  // namespace tarvo
