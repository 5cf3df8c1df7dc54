#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "sandbox/CallTable.h"

namespace tarvo::sandbox {

/// The statements that make a client's tables other than those of records. Every statement may run again without harm;
/// each table replaces by a natural key. The client adds what it alone needs.
///
/// `organisation` is the organisation that the client has chosen: tables that are kept apart by organisation then come
/// a second time under a name that ends in it. A text that is no plain identifier counts as none.
std::vector<std::string> staticTables(Naming naming, std::string_view organisation);

}  // namespace tarvo::sandbox
