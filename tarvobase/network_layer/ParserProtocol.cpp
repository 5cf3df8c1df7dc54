#include "tarvobase/network_layer/ParserProtocol.h"

#include "tarvobase/network_layer/AnswerBody.h"

namespace tarvo {

namespace {

// One bad time makes both 0, since a pair of times of which one is a guess is of no use.
ResponseInfo timesOf(const ValueMap& response) {
    auto info = parseAs<ValueMap>(response, "responseInfo");
    if (!info) return {};
    auto serverTime = parseAs<std::uint64_t>(*info, "servertime");
    auto responseTime = parseAs<std::uint64_t>(*info, "responsetime");
    if (!serverTime || !responseTime) return {};
    return {*serverTime, *responseTime};
}

}  // namespace

Result<Envelope, ParserError> parseEnvelope(const platform::Data& data) {
    auto body = AnswerBody::value(data);
    if (!body) return ParserError(ParserError::Case::jsonSerializationFailed);
    return parseEnvelope(*body);
}

Result<Envelope, ParserError> parseEnvelope(const Value& value) {
    auto body = value.asMap();
    if (!body) return ParserError(ParserError::Case::jsonSerializationFailed);
    if (auto errors = readKey<ValueList>(*body, "error")) return ParserError::responseError(std::move(errors));
    auto response = parseAs<ValueMap>(*body, "response");
    if (!response) return response.error();
    if (readKey<ValueMap>(*response, "error")) return ParserError::responseError(std::nullopt);
    auto result = parseAs<ValueList>(*response, "result");
    if (!result) return result.error();
    for (auto& entry : *result)
        if (!entry.asMap()) return ParserError::typeConversionFailedForKey("result");
    return Envelope{*std::move(result), timesOf(*response)};
}

std::optional<platform::Data> KelvaBaseParser::convert(const Value& object) const {
    auto text = json::write(object);
    return text ? std::optional(platform::Data(*std::move(text))) : std::nullopt;
}

}  // namespace tarvo
