#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tarvobase/network_layer/ResultInfo.h"
#include "tarvobase/records/wire/WireRecords.h"

namespace tarvo {

/// What changed in the list of a view. The records are still in the parsed document. An absent list is one that the
/// server did not send.
struct SyncLFRecordParsedResult {
    std::optional<WireRecords> addedRecordList, modifiedRecordList;
    std::optional<std::vector<std::string>> deletedRecords;
    std::optional<std::vector<std::string>> movedRecords;  ///< records that are no longer in the list
    SyncLFRecordsInfo info;                                ///< that of the first entry
    ResponseInfo responseInfo;

    /// Returns whether no list holds anything.
    bool isEmpty() const;
    /// Returns how many records and ids all lists hold.
    std::size_t count() const;
    /// Returns the time of the answer, in milliseconds since 1970, or nullopt if it names none.
    std::optional<std::int64_t> time() const;
};

/// Reads the changes of a list: exactly four entries, with the added records, the modified ones, the ids of deleted
/// ones and those of moved ones. Fails for any other number, and if one of the entries is a refusal or a list of
/// records that cannot be read. Stateless, may be used from any thread.
struct SyncLFRecordParser {
    static Result<SyncLFRecordParsedResult, ParserError> parse(const platform::Data& data);
};

}  // namespace tarvo
