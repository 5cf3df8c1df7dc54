#pragma once

#include <cstdint>

#include "host/Arguments.h"
#include "host/Host.h"

/// The commands that change records, and those for the changes that the server does not have yet. Each returns the exit
/// status. A change that is saved here is a success, also while the server cannot be reached; one that the server
/// refuses is a failure.
namespace tarvo::host {

/// Waits for the server if the arguments ask for it, and says what has become of a change that is saved here.
int reportChange(const Arguments& arguments, const std::string& recordId, std::int64_t number);
int addRecord(Host& host, const Arguments& arguments);
int editRecord(Host& host, const Arguments& arguments);
int deleteRecord(Host& host, const Arguments& arguments);
int listPending(Host& host, const Arguments& arguments);
int retryChanges(Host& host, const Arguments& arguments);
int cancelChanges(Host& host, const Arguments& arguments);
int explainChanges(Host& host, const Arguments& arguments);
int drainChanges(Host& host, const Arguments& arguments);

}  // namespace tarvo::host
