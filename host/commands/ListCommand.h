#pragma once

#include "host/Host.h"

namespace tarvo::host {

/// Lists a page of a view's records: the stored ones, and those of the server where they do not suffice and it can be
/// reached. Gives the exit status of the program.
int listRecords(Host& host, const Arguments& arguments);

}  // namespace tarvo::host
