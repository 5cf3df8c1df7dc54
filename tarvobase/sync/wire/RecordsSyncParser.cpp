#include "tarvobase/sync/wire/RecordsSyncParser.h"

#include <array>

#include "platform/Text.h"
#include "tarvobase/network_layer/AnswerBody.h"

namespace tarvo {

namespace {

using Entry = Result<RParsedResult<WireRecords, RecordListInfo>, ParserError>;

/// Returns the text of ids in the first entry of the first row, or an empty text if there is none.
std::string deletedIdsText(const json::Element& data) {
    std::array<json::Element, 1> row, ids;
    if (data.leadingItems(row) == 0 || row[0].leadingItems(ids) == 0) return "";
    return std::string(ids[0].asText().value_or(""));
}

std::vector<std::string> deletedIds(const json::Element& data) {
    std::vector<std::string> ids;
    for (auto& id : text::split(deletedIdsText(data), ","))
        if (!id.empty()) ids.push_back(id);
    return ids;
}

/// Returns why an entry cannot be used.
std::optional<ParserError> failureOf(const Entry& entry) {
    if (!entry) return entry.error();
    return entry->data ? std::nullopt : std::optional(entry->data.error());
}

}  // namespace

Result<SyncRecordsResponse, ParserError> RecordsSyncParser::parseResult(const platform::Data& data) {
    auto parsed = WireRecordsParser::parse(data);
    if (!parsed) return parsed.error();
    auto& entries = parsed->result;
    // A refusal is a single entry. Nothing but one costs the third list its page, which is only read for its ids.
    for (auto& entry : entries)
        if (auto failure = failureOf(entry); failure && failure->which() == ParserError::Case::responseError)
            return *failure;
    if (entries.size() < 3) return ParserError::noData();
    for (std::size_t i = 0; i < 2; ++i)
        if (auto failure = failureOf(entries[i])) return *failure;

    SyncRecordsResponse response;
    response.addedRecords = entries[0]->data.value();
    response.editedRecords = entries[1]->data.value();
    std::vector<json::Element> items;
    auto& document = response.addedRecords->document;
    document.root().find("response").find("result").items(items);
    if (auto ids = items.size() > 2 ? items[2].find("data") : json::Element(); ids.kind() == ValueKind::list)
        response.deletedRecordIDs = deletedIds(ids);
    response.resultInfo = entries[0]->info;
    return response;
}

}  // namespace tarvo
