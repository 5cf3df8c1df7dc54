#pragma once

#include "host/Host.h"

namespace tarvo::host {

/// Shows one record by the sections of its layout, from the database; the server is asked for one that is not stored.
/// Returns the exit status of the program.
int showRecord(Host& host, const Arguments& arguments);

}  // namespace tarvo::host
