#pragma once

#include <map>
#include <string>
#include <vector>

#include "tarvobase/value_objects/transaction/NTransaction.h"

namespace tarvo {

/// Returns the texts of a payload that are a temporary id, in either form, each once. Free text that contains one does
/// not count, and neither do the title and the text of a note.
std::vector<std::string> temporaryIdsOf(const ValueMap& payload);

/// Returns whether a request for the transaction would name a record that the server does not know. A transaction that
/// creates its record leaves out its own id.
bool namesTemporaryId(const NTransaction& transaction);

/// Replaces ids wherever they stand in the JSON text of a payload. An id that goes on as a longer one is another id.
std::string withReplacedIds(const std::string& payload, const std::map<std::string, std::string>& identifiers);

}  // namespace tarvo
