#include "tarvobase/sync/wire/RecordsSyncParser.h"

#include "tarvobase/sync/wire/SyncEntries.h"

namespace tarvo {

Result<SyncRecordsResponse, ParserError> RecordsSyncParser::parseResult(const platform::Data& data) {
    auto parsed = WireRecordsParser::parse(data);
    if (!parsed) return parsed.error();
    auto& entries = parsed->result;
    if (auto failure = failureOf(entries, 2)) return *failure;
    if (entries.size() < 3) return ParserError::noData();

    SyncRecordsResponse response;
    response.addedRecords = entries[0]->data.value();
    response.editedRecords = entries[1]->data.value();
    std::vector<json::Element> items;
    auto& document = response.addedRecords->document;
    document.root().find("response").find("result").items(items);
    if (items.size() > 2) response.deletedRecordIDs = idsOfEntry(items[2]);
    response.resultInfo = entries[0]->info;
    return response;
}

}  // namespace tarvo
