#pragma once

#include "bridge/Registry.h"

namespace tarvo::bridge {

/// Registers every public operation of the library, by the name of its class.
void addCalls(Registry& registry);

/// Registers the calls for users, settings and organisations.
void addAccountCalls(Registry& registry);

/// Registers the calls for modules, fields and layouts.
void addMetadataCalls(Registry& registry);

/// Registers the calls for views and the filters of columns.
void addViewCalls(Registry& registry);

/// Registers the calls whose delegate receives records.
void addRecordCalls(Registry& registry);

/// Registers the calls that add, edit and delete records.
void addChangeCalls(Registry& registry);

/// Registers the calls that add and edit notes.
void addNoteCalls(Registry& registry);

/// Registers the first download, the download of records alone, and the lists of views.
void addDownloadCalls(Registry& registry);

/// Registers the sync of records, and their download module by module.
void addSyncCalls(Registry& registry);

}  // namespace tarvo::bridge
