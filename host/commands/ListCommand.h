#pragma once

#include "host/Host.h"

namespace tarvo::host {

/// Lists a page of a view's records: the stored ones, or the server's if the stored ones do not fill the page and it
/// can be reached. Returns the exit status of the program.
int listRecords(Host& host, const Arguments& arguments);

}  // namespace tarvo::host
