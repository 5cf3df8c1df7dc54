#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tarvobase/records/wire/WireRecords.h"

namespace tarvo {

/// One page of what changed in a module. The records are still in the parsed document, so a copy is cheap. An absent
/// list is one that the server did not send.
struct SyncRecordsResponse {
    std::optional<WireRecords> addedRecords;
    std::optional<WireRecords> editedRecords;
    std::optional<std::vector<std::string>> deletedRecordIDs;
    RecordListInfo resultInfo;  ///< that of the added records; it counts all three lists
};

/// Reads a page of changes. Its entries are the added records, the edited ones and the ids of deleted ones, in this
/// order; further entries are ignored. Fails if there are fewer, or if one of them is a refusal or a list that cannot
/// be read: a page with a gap would move the watermark past changes that never arrive. Stateless, may be used from any
/// thread.
struct RecordsSyncParser {
    static Result<SyncRecordsResponse, ParserError> parseResult(const platform::Data& data);
};

}  // namespace tarvo
