#pragma once

#include <map>
#include <string>
#include <vector>

#include "tarvobase/records/FreeText.h"
#include "tarvobase/value_objects/transaction/NTransaction.h"

namespace tarvo {

/// Returns the temporary ids, in either form, that a transaction's payload names, each once. Free text names none, even
/// if it is such an id.
std::vector<std::string> temporaryIdsOf(const NTransaction& transaction, const FreeText& freeText);

/// Returns whether a request for the transaction would name a record that the server does not know. A transaction that
/// creates its record leaves out its own id.
bool namesTemporaryId(const NTransaction& transaction, const FreeText& freeText);

/// Replaces the ids that a transaction's payload names, as a text of their own or among several that "," joins. Free
/// text stays as it was written, like that of the record. Returns whether there was one.
bool replaceIds(NTransaction& transaction, const std::map<std::string, std::string>& identifiers,
                const FreeText& freeText);

}  // namespace tarvo
