#pragma once

#include "host/Host.h"

namespace tarvo::host {

/// Takes calls as lines of JSON from standard input until it ends, and writes their callbacks to standard output.
/// Returns the exit status of the program.
int serve(Host& host);

}  // namespace tarvo::host
