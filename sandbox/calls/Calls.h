#pragma once

#include "sandbox/CallTable.h"

/// The calls of the server, one function a row of the table.
namespace tarvo::sandbox::calls {

/// Everything a client needs to lay out an empty account.
Reply initData(const Call& call);
/// The tags of the module that "module" or "moduleAPI" names, as rows of id and name.
Reply moduleTags(const Call& call);
/// Fields, layouts, picklists, related lists and record tables of the modules that "module" or "moduleAPI" lists.
Reply metadata(const Call& call);

}  // namespace tarvo::sandbox::calls
