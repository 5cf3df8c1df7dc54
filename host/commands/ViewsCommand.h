#pragma once

#include "host/Host.h"

namespace tarvo::host {

/// Lists the stored views of a module. Fetches them first when there are none, and the modules before that when there
/// are none. Returns the exit status of the program.
int listViews(Host& host, const Arguments& arguments);

}  // namespace tarvo::host
