#pragma once

#include "host/Host.h"

namespace tarvo::host {

/// Lists the stored modules and says where they are stored. Fetches them first when there are none. Gives the exit
/// status of the program.
int listModules(Host& host, const Arguments& arguments);

}  // namespace tarvo::host
