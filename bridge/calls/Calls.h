#pragma once

#include "bridge/Registry.h"

namespace tarvo::bridge {

/// Every public operation of the library, by the name of its class.
void addCalls(Registry& registry);

/// Those that answer a delegate about users, settings and organisations.
void addAccountCalls(Registry& registry);

/// Those that tell of modules, fields and layouts.
void addMetadataCalls(Registry& registry);

/// Those that tell of views and of the filters of columns.
void addViewCalls(Registry& registry);

/// Those that answer a delegate with records.
void addRecordCalls(Registry& registry);

/// The first download, the one of records alone, and the lists of views.
void addDownloadCalls(Registry& registry);

}  // namespace tarvo::bridge
