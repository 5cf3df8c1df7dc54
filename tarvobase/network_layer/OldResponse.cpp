#include "tarvobase/network_layer/OldResponse.h"

#include "platform/Json.h"
#include "tarvobase/network_layer/AnswerBody.h"

namespace tarvo {

namespace {

using PartResult = Result<ValueList, OldResultError>;

PartResult resultOf(const OldResponseInfo& info, const ValueList& pair) {
    if (info.error == 0) {
        if (auto data = readIndex<ValueList>(pair, 1)) return *std::move(data);
    } else if (info.error == 1) {
        auto refusal = readIndex<ValueMap>(pair, 1);
        auto code = refusal ? readKey<std::int64_t>(*refusal, "code") : std::nullopt;
        auto message = refusal ? readKey<std::string>(*refusal, "message") : std::nullopt;
        if (code && message) return OldResultError{OldResultError::Case::serverError, *code, *message};
    }
    return OldResultError{};
}

OldResponsePart partOf(const Value& value) {
    auto pair = value.asList();
    auto header = pair ? readIndex<ValueMap>(*pair, 0) : std::nullopt;
    auto error = header ? readKey<std::int64_t>(*header, "error") : std::nullopt;
    if (!error) return {{}, OldResultError{}};
    OldResponseInfo info{readKey<std::uint64_t>(*header, "servertime").value_or(0), *error};
    return {info, resultOf(info, *pair)};
}

}  // namespace

Result<std::vector<OldResponsePart>, ParserError> parseOldResponse(const platform::Data& data) {
    auto document = AnswerBody::value(data);
    auto body = document ? document->asMap() : nullptr;
    if (!body) return ParserError(ParserError::Case::jsonSerializationFailed);
    if (auto errors = readKey<ValueList>(*body, "error")) return ParserError::responseError(std::move(errors));
    auto pairs = parseAs<ValueList>(*body, "response");
    if (!pairs) return pairs.error();
    std::vector<OldResponsePart> parts;
    for (auto& pair : *pairs) parts.push_back(partOf(pair));
    return parts;
}

}  // namespace tarvo
