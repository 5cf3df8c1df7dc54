#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tarvobase/records/wire/WireRecords.h"

namespace tarvo {

/// The entries of an answer that says what changed. The first ones hold records, the others ids.
using SyncEntry = Result<RParsedResult<WireRecords, RecordListInfo>, ParserError>;

/// Returns why an answer cannot be used, or nullopt if it can: one of its entries is a refusal, or one of the first
/// `recordLists` cannot be read. Nothing but a refusal costs an entry of ids the answer.
std::optional<ParserError> failureOf(const std::vector<SyncEntry>& entries, std::size_t recordLists);

/// Returns the ids of an entry, which are one text in the first row, or nullopt if the entry has no list.
std::optional<std::vector<std::string>> idsOfEntry(const json::Element& entry);

}  // namespace tarvo
