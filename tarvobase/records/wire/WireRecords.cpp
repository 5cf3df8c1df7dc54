#include "tarvobase/records/wire/WireRecords.h"

#include <array>

#include "tarvobase/configuration/Variant.h"
#include "tarvobase/network_layer/AnswerBody.h"
#include "tarvobase/records/RecordUtil.h"
#include "tarvobase/records/wire/RecordConversion.h"
#include "tarvobase/records/wire/RecordParser.h"
#include "tarvobase/records/wire/WireEntries.h"

namespace tarvo {

namespace {

using json::Element;

/// Returns the named members that a map has.
ValueMap membersOf(const Element& map, std::initializer_list<std::string_view> names) {
    ValueMap members;
    for (auto name : names)
        if (auto member = map.find(name); member.kind() != ValueKind::null) members.set(name, member.copy());
    return members;
}

/// Returns an entry of "result" with an empty list in place of its records.
Value withoutRecords(const Element& entry) {
    if (entry.kind() != ValueKind::map) return entry.copy();
    auto members = membersOf(entry, {"info", "error"});
    auto data = entry.find("data");
    if (data.kind() != ValueKind::null)
        members.set("data", data.kind() == ValueKind::list ? Value(ValueList()) : data.copy());
    return members;
}

/// Returns the body of an answer without its records.
Value withoutRecords(const Element& root, const std::vector<Element>& entries) {
    if (root.kind() != ValueKind::map) return {};
    auto body = membersOf(root, {"error"});
    auto response = root.find("response");
    if (response.kind() != ValueKind::map) {
        if (response.kind() != ValueKind::null) body.set("response", response.copy());
        return body;
    }
    auto members = membersOf(response, {"error", "responseInfo"});
    auto result = response.find("result");
    if (result.kind() == ValueKind::list) {
        ValueList bare;
        for (auto& entry : entries) bare.push_back(withoutRecords(entry));
        members.set("result", std::move(bare));
    } else if (result.kind() != ValueKind::null) {
        members.set("result", result.copy());
    }
    body.set("response", std::move(members));
    return body;
}

Result<WireRecordsParser::Response, ParserError> parsed(const platform::Data& data) {
    auto document = AnswerBody::document(data);
    if (!document) return ParserError(ParserError::Case::jsonSerializationFailed);
    std::vector<Element> entries;
    document->root().find("response").find("result").items(entries);
    auto envelope = parseEnvelope(withoutRecords(document->root(), entries));
    if (!envelope) return envelope.error();

    WireRecordsParser::Response response;
    response.responseInfo = envelope->responseInfo;
    RecordParser parser;
    for (std::size_t i = 0; i < envelope->entries.size(); ++i) {
        auto list = parser.parseRecordList(*envelope->entries[i].asMap());
        if (!list) {
            response.result.push_back(list.error());
            continue;
        }
        using Entry = RParsedResult<WireRecords, RecordListInfo>;
        if (list->records)
            response.result.push_back(Entry{WireRecords{*document, entries[i].find("data")}, list->info});
        else
            response.result.push_back(Entry{list->records.error(), list->info});
    }
    return response;
}

}  // namespace

Result<WireRecordsParser::Response, ParserError> WireRecordsParser::parse(const platform::Data& data) {
    using Parsed = Result<Response, ParserError>;
    return AnswerBody::withinMemory(Parsed(ParserError(ParserError::Case::jsonSerializationFailed)),
                                    [&] { return parsed(data); });
}

std::optional<std::vector<Record>> recordsOf(const WireRecords& wireRecords, const FieldList& fields) {
    std::vector<Element> items;
    wireRecords.list.items(items);
    bool withPersonNames = variant::metadataVersion() == GetMetadataApiVersion::lumet;
    RecordConversion conversion(fields);
    std::vector<Record> records;
    for (auto& dictionary : wire::dictionaries(items, variant::rewritesSystemProperties(), withPersonNames)) {
        auto record = conversion.toRecord(dictionary);
        if (!record) return std::nullopt;
        records.push_back(*std::move(record));
    }
    return records;
}

std::size_t recordCount(const std::optional<WireRecords>& wireRecords) {
    return wireRecords ? wireRecords->list.leadingItems({}) : 0;
}

std::vector<std::string> idsOf(const WireRecords& wireRecords) {
    std::vector<Element> items, entries;
    wireRecords.list.items(items);
    std::vector<std::string> ids;
    for (auto& item : items) {
        item.items(entries);
        for (auto& entry : entries) {
            std::array<Element, 2> pair;
            if (entry.leadingItems(pair) < 2 || pair[0].asText() != RecordConstants::FieldAPINames::Id) continue;
            if (auto id = pair[1].asText()) ids.emplace_back(*id);
            break;
        }
    }
    return ids;
}

}  // namespace tarvo
