#pragma once

#include "host/Host.h"

namespace tarvo::host {

/// Downloads the account for the first time, or what an interrupted download still lacks, with its progress, and prints
/// a summary. For a complete account it prints the summary only, unless the arguments ask to fetch. Returns the
/// exit status of the program: 1 if the download did not come to its end.
int initAccount(Host& host, const Arguments& arguments);

}  // namespace tarvo::host
