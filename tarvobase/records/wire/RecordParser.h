#pragma once

#include <optional>
#include <utility>
#include <vector>

#include "tarvobase/network_layer/ParserProtocol.h"
#include "tarvobase/records/wire/ModuleParser.h"
#include "tarvobase/value_objects/transaction/ErrorResponse.h"

namespace tarvo {

/// The records of one entry of an answer, or the reason why there are none.
template <class Info = RecordListInfo>
struct ParsedRecordList {
    Result<std::vector<ValueMap>, ParserError> records;
    Info info;
};

/// Parses lists of records into wire dictionaries. An entry without "data" is a failure, unless its info says `nodata`:
/// then it is an empty list. Stateless, may be used from any thread.
template <class Info = RecordListInfo>
class RecordParser : public ParserProtocol<std::vector<ValueMap>, Info> {
public:
    using Records = std::vector<ValueMap>;
    using Response = ParsedResponse<Records, Info>;

    Result<Response, ParserError> parse(const platform::Data& data) override {
        auto envelope = parseEnvelope(data);
        if (!envelope) return envelope.error();
        Response response;
        response.responseInfo = envelope->responseInfo;
        for (auto& entry : envelope->entries) response.result.push_back(parseEntry(*entry.asMap()));
        return response;
    }
    Result<Records, ParserError> parseResult(const ValueList& rows, const Info& info) override {
        return ModuleParser::parseRecord(rows, info.moduleName.value_or("")).records;
    }
    /// Parses one entry of "result".
    Result<ParsedRecordList<Info>, ParserError> parseRecordList(const ValueMap& entry) {
        auto parsed = parseEntry(entry);
        if (!parsed) return parsed.error();
        return ParsedRecordList<Info>{std::move(parsed->data), std::move(parsed->info)};
    }

private:
    using Entry = RParsedResult<Records, Info>;

    Result<Entry, ParserError> parseEntry(const ValueMap& entry) {
        if (auto info = noDataInfo(entry)) return Entry{Records(), *info};
        auto parsed = BaseResultParser::parse<Info>(entry);
        if (!parsed) return parsed.error();
        if (!parsed->data) return Entry{parsed->data.error(), parsed->info};
        return Entry{parseResult(*parsed->data, parsed->info), parsed->info};
    }
    /// Returns the info of an entry that says `nodata`, and nullopt for any other entry.
    static std::optional<Info> noDataInfo(const ValueMap& entry) {
        if (entry.contains("data") || readKey<ValueList>(entry, "error")) return std::nullopt;
        auto map = readKey<ValueMap>(entry, "info");
        if (!map) return std::nullopt;
        auto info = decodeInfo<Info>(*map);
        return info && info->noData == true ? std::optional<Info>(*info) : std::nullopt;
    }
};

/// One entry of an answer with records, both as it came and as wire dictionaries.
struct DownloadedRecords {
    RecordListInfo info;
    std::optional<std::vector<ValueMap>> records;
    std::optional<ValueList> error;
    std::optional<ValueList> data;

    /// Returns the refusal if the error list is a code and a message.
    std::optional<ErrorResponse> getErrorResponse() const {
        return error ? ErrorResponse::fromErrorList(*error, info.details) : std::nullopt;
    }
};

struct GetRecordsParser {
    /// Without data, `records` is an empty list if the info says `nodata`, and absent otherwise.
    static DownloadedRecords parse(const ValueMap& entry, RecordListInfo info);
};

}  // namespace tarvo
