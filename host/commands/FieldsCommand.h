#pragma once

#include "host/Host.h"

namespace tarvo::host {

/// Lists the fields of a module by layout and section. Fetches its metadata first when there is none, and the modules
/// before that when there are none. Returns the exit status of the program.
int listFields(Host& host, const Arguments& arguments);

}  // namespace tarvo::host
