#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "platform/Data.h"
#include "platform/Json.h"
#include "platform/Object.h"
#include "platform/Result.h"
#include "tarvobase/network_layer/AnswerBody.h"
#include "tarvobase/network_layer/ResultInfo.h"

namespace tarvo {

/// The server's times of an answer, in milliseconds since 1970. Both are 0 if the answer lacks one of them.
struct ResponseInfo {
    std::uint64_t serverTime = 0;
    std::uint64_t responseTime = 0;
};

/// An entry of an answer as it came.
template <class Info>
struct ParsedResult {
    Info info;
    std::optional<ValueList> error;
    std::optional<ValueList> data;
};

/// An entry of an answer with its rows, or the reason why there are none.
template <class T, class Info>
struct RParsedResult {
    Result<T, ParserError> data;
    Info info;
};

template <class T, class Info>
struct ParsedResponse {
    std::vector<Result<RParsedResult<T, Info>, ParserError>> result;
    ResponseInfo responseInfo;
};

/// Reads an entry of "result". "error" takes precedence over "data", and `Info` decides how "info" is read.
struct BaseResultParser {
    template <class T>
    static Result<T, ParserError> getKey(std::string_view key, const ValueMap& from) {
        return parseAs<T>(from, key);
    }

    template <class Info>
    static Result<RParsedResult<ValueList, Info>, ParserError> parse(const ValueMap& entry) {
        using Parsed = RParsedResult<ValueList, Info>;
        auto infoMap = getKey<ValueMap>("info", entry);
        if (!infoMap) return infoMap.error();
        auto info = decodeInfo<Info>(*infoMap);
        if (!info) return info.error();
        if (auto error = getKey<ValueList>("error", entry)) return Parsed{ParserError::responseError(*error), *info};
        auto data = getKey<ValueList>("data", entry);
        if (!data) return data.error();
        return Parsed{*std::move(data), *info};
    }
};

/// The content of the envelope, whatever the types of an answer.
struct Envelope {
    std::vector<Value> entries;  ///< all of them are maps
    ResponseInfo responseInfo;
};
Result<Envelope, ParserError> parseEnvelope(const platform::Data& data);
Result<Envelope, ParserError> parseEnvelope(const Value& body);

/// Turns a body into typed entries. Subclasses read the rows of an entry in `parseResult`. The failure of an entry
/// leaves the others usable. A parser has no state and may be used from several threads at a time.
template <class T, class Info>
class ParserProtocol : public virtual platform::Object {
public:
    virtual Result<ParsedResponse<T, Info>, ParserError> parse(const platform::Data& data) {
        using Parsed = Result<ParsedResponse<T, Info>, ParserError>;
        return AnswerBody::withinMemory(Parsed(ParserError(ParserError::Case::jsonSerializationFailed)),
                                        [&] { return parseEntries(data); });
    }

    virtual Result<T, ParserError> parseResult(const ValueList& rows, const Info& info) {
        static_cast<void>(rows), static_cast<void>(info);
        return ParserError(ParserError::Case::noData);
    }

private:
    Result<ParsedResponse<T, Info>, ParserError> parseEntries(const platform::Data& data) {
        auto envelope = parseEnvelope(data);
        if (!envelope) return envelope.error();
        ParsedResponse<T, Info> response;
        response.responseInfo = envelope->responseInfo;
        response.result.reserve(envelope->entries.size());
        for (auto& entry : envelope->entries) response.result.push_back(parseEntry(*entry.asMap()));
        return response;
    }
    Result<RParsedResult<T, Info>, ParserError> parseEntry(const ValueMap& entry) {
        using Parsed = RParsedResult<T, Info>;
        auto parsed = BaseResultParser::parse<Info>(entry);
        if (!parsed) return parsed.error();
        if (!parsed->data) return Parsed{parsed->data.error(), parsed->info};
        return Parsed{parseResult(*parsed->data, parsed->info), parsed->info};
    }
};

/// Converts bodies and models that are plain JSON.
class KelvaBaseParser {
public:
    virtual ~KelvaBaseParser() = default;
    /// Returns a value as JSON, or nullopt if it holds values that JSON cannot express.
    std::optional<platform::Data> convert(const Value& object) const;
    std::optional<platform::Data> encode(const Value& model) const { return convert(model); }
    /// Returns `read(document)` for the document in a body, or nullopt if the body is not JSON.
    template <class Read>
    auto parse(const platform::Data& data, Read&& read) const -> decltype(read(Value())) {
        auto document = json::parse(data);
        if (!document) return std::nullopt;
        return read(*document);
    }
};

}  // namespace tarvo
