#pragma once

#include "host/Host.h"

namespace tarvo::host {

/// Lists the stored modules and the path of their database. Fetches them first when there are none. Returns the exit
/// status of the program.
int listModules(Host& host, const Arguments& arguments);

}  // namespace tarvo::host
