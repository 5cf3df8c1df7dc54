#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "sandbox/CallTable.h"

namespace tarvo::sandbox {

/// Returns the statements that make a client's tables other than those of records. Every statement may run again
/// without harm; each table replaces rows by a natural key. The client adds the tables that only it needs.
///
/// `organisation` is the organisation that the client has chosen: tables that are kept apart by organisation then come
/// a second time under a name that ends in it. A text that is not a plain identifier counts as no organisation.
std::vector<std::string> staticTables(Naming naming, std::string_view organisation);

}  // namespace tarvo::sandbox
