#include "tarvobase/list_sync/wire/SyncLFRecordParser.h"

#include "tarvobase/sync/wire/SyncEntries.h"

namespace tarvo {

namespace {

constexpr std::size_t entryCount = 4;

std::optional<std::int64_t> unlessZero(std::uint64_t time) {
    return time > 0 ? std::optional(static_cast<std::int64_t>(time)) : std::nullopt;
}

}  // namespace

bool SyncLFRecordParsedResult::isEmpty() const { return count() == 0; }

std::size_t SyncLFRecordParsedResult::count() const {
    return recordCount(addedRecordList) + recordCount(modifiedRecordList) +
           (deletedRecords ? deletedRecords->size() : 0) + (movedRecords ? movedRecords->size() : 0);
}

std::optional<std::int64_t> SyncLFRecordParsedResult::time() const {
    if (info.responseTime) return info.responseTime;
    if (auto time = unlessZero(responseInfo.responseTime)) return time;
    return info.serverTime ? info.serverTime : unlessZero(responseInfo.serverTime);
}

Result<SyncLFRecordParsedResult, ParserError> SyncLFRecordParser::parse(const platform::Data& data) {
    auto parsed = WireRecordsParser::parse(data);
    if (!parsed) return parsed.error();
    auto& entries = parsed->result;
    if (auto failure = failureOf(entries, 2)) return *failure;
    if (entries.size() != entryCount) return ParserError::noData();

    SyncLFRecordParsedResult result;
    result.addedRecordList = entries[0]->data.value();
    result.modifiedRecordList = entries[1]->data.value();
    result.responseInfo = parsed->responseInfo;
    std::vector<json::Element> items;
    result.addedRecordList->document.root().find("response").find("result").items(items);
    auto info = items[0].find("info").copy();
    auto decoded = decodeInfo<SyncLFRecordsInfo>(info.asMap() ? *info.asMap() : ValueMap());
    if (!decoded) return decoded.error();
    result.info = std::move(decoded).value();
    result.deletedRecords = idsOfEntry(items[2]);
    result.movedRecords = idsOfEntry(items[3]);
    return result;
}

}  // namespace tarvo
