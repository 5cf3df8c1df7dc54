#pragma once

#include <optional>
#include <string>

#include "tarvobase/transaction/Change.h"
#include "tarvobase/value_objects/transaction/Transaction.h"

/// The notices of `ChangeQueueObserver`. Call them after the commit that they report, from any thread.
namespace tarvo::changeNotices {

void saved(Change change);
void notSaved(const std::string& moduleName, const std::string& recordId, ChangeNotSaved reason);
void accepted(Change change, const std::optional<std::string>& formerRecordId);
void cancelled(Change change);
void refused(Change change, const ErrorResponse& error);

}  // namespace tarvo::changeNotices
