#pragma once

#include <cstdint>

#include "host/Arguments.h"
#include "host/Host.h"
#include "platform/Result.h"
#include "tarvobase/records/Record.h"

/// The commands that change notes, which go through the current queue. Each returns the exit status, under the rules of
/// the commands that change other records.
namespace tarvo::host {

/// Adds a note to a record.
int noteRecord(Host& host, const Arguments& arguments);
/// Edits a note. Returns the number of the change, or the exit status of a change that is not stored.
Result<std::int64_t, int> editedNote(const Record& record);

}  // namespace tarvo::host
