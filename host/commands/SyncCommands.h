#pragma once

#include "host/Host.h"

namespace tarvo::host {

/// Sends the changes that wait, then asks the server for what changed in the modules of the arguments, or in all of
/// them, and prints how each round went. Returns the exit status: 1 if a round broke off.
int syncModules(Host& host, const Arguments& arguments);
/// Prints what the last round of the module brought, or where it broke off.
int showLastRound(Host& host, const Arguments& arguments);
/// Downloads records of the modules of the arguments, page by page. Returns the exit status: 1 if a module failed.
int downloadModules(Host& host, const Arguments& arguments);

}  // namespace tarvo::host
