#pragma once

#include <string>
#include <vector>

#include "sandbox/data/Records.h"

/// The lists of an answer that says what changed.
namespace tarvo::sandbox::calls {

/// Appends records in their wire form, as a JSON list.
void appendRecords(const std::vector<RecordData>& records, std::string& json);
/// Appends ids as one text, which is the only value of the only row. An empty list has no row.
void appendIds(const std::vector<std::string>& ids, std::string& json);

}  // namespace tarvo::sandbox::calls
