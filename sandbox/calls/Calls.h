#pragma once

#include "sandbox/CallTable.h"

/// The calls of the server, one function a row of the table.
namespace tarvo::sandbox::calls {

/// Everything a client needs to lay out an empty account.
Reply initData(const Call& call);

}  // namespace tarvo::sandbox::calls
