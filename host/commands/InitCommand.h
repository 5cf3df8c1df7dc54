#pragma once

#include "host/Host.h"

namespace tarvo::host {

/// Downloads the account for the first time, or what an interrupted download still lacks, showing how far it is, and
/// sums up what is stored. An account that is complete is summed up alone, unless the arguments ask to fetch. Gives the
/// exit status of the program: 1 when the download could not be brought to its end.
int initAccount(Host& host, const Arguments& arguments);

}  // namespace tarvo::host
