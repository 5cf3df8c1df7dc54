#pragma once

#include "sandbox/CallTable.h"

/// The calls of the server, one function per row of the table.
namespace tarvo::sandbox::calls {

/// Returns everything that a client needs to lay out an empty account.
Reply initData(const Call& call);
/// Returns the tags of the module that "module" or "moduleAPI" names, as rows of id and name.
Reply moduleTags(const Call& call);
/// Returns fields, layouts, picklists, related lists and record tables of the modules that "module" or "moduleAPI"
/// lists.
Reply metadata(const Call& call);
/// Returns the views of the modules that "module" or "moduleAPI" lists.
Reply views(const Call& call);
/// Returns the row of the user who calls.
Reply userDetails(const Call& call);
/// Returns what the profile "profileid" may do with each module.
Reply permissions(const Call& call);
/// Returns the taxes and currencies of the organisation, in the older form.
Reply taxesAndCurrencies(const Call& call);
/// Returns the pipelines of deals with their stages, then all stages.
Reply pipelines(const Call& call);
/// Returns records of views in the wire form: a page of one view, or the first records of the views of several modules.
Reply viewRecords(const Call& call);
/// Returns a page of all records of a module, the newest first.
Reply moduleRecords(const Call& call);
/// Returns a page of what was added, edited and deleted in a module after "lmt".
Reply changedRecords(const Call& call);
/// Returns what entered, changed, was deleted from and left the list of the view "cvid" after "lmt". It answers
/// `changedRecords` calls that name a view.
Reply changesOfList(const Call& call);
/// Returns one record by its id.
Reply singleRecord(const Call& call);
/// Adds the records of the body and answers one entry per payload.
Reply addRecords(const Call& call);
/// Edits the records that the payloads of the body name by "id".
Reply updateRecords(const Call& call);
/// Deletes the record "id".
Reply deleteRecord(const Call& call);
/// Adds the uploaded "file" as an attachment of the record "id".
Reply uploadAttachment(const Call& call);
Reply uploadVoiceNote(const Call& call);

}  // namespace tarvo::sandbox::calls
