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
/// The views of the modules that "module" or "moduleAPI" lists.
Reply views(const Call& call);
/// The row of the user who calls.
Reply userDetails(const Call& call);
/// What the profile "profileid" may do with each module.
Reply permissions(const Call& call);
/// Taxes and currencies of the organisation, in the older form.
Reply taxesAndCurrencies(const Call& call);
/// The pipelines of deals with their stages, then all stages.
Reply pipelines(const Call& call);
/// Records of views in the wire form: of one view a page, or of the views of several modules their first records.
Reply viewRecords(const Call& call);
/// A page of all records of a module, the newest first.
Reply moduleRecords(const Call& call);
/// One record by its id.
Reply singleRecord(const Call& call);

}  // namespace tarvo::sandbox::calls
