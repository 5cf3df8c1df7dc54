#pragma once

#include "host/Host.h"

namespace tarvo::host {

/// Lists the filters that a field of a module offers. Fetches the module's metadata first when there is none, and the
/// modules before that when there are none. Returns the exit status of the program.
int listFilters(Host& host, const Arguments& arguments);

}  // namespace tarvo::host
