#pragma once

#include <memory>
#include <string_view>

#include "tarvobase/configuration/ServerTypes.h"

/// The variant of the server's data, as `CommonConfigration` has it. It holds for every account and organisation of a
/// host, which chooses it once, so code of every layer may ask for it here. All that differs between accounts comes
/// from a `Scope` or from a constructor's arguments instead.
///
/// Each function returns the present value, and may be called from any thread.
namespace tarvo {

class NewRecordIdGenerator;

namespace variant {

/// Returns whether modules have an id of the server instead of going by their names.
bool hasModuleIDs();
/// Returns whether rows of layouts have two more columns.
bool hasMoreLayoutColumns();
/// Returns whether views keep the server's own criteria.
bool hasServerCriteria();
/// Returns whether parsing rewrites system properties ("$name").
bool rewritesSystemProperties();
GetMetadataApiVersion metadataVersion();
/// Returns the API name of the field that names the module of a record's parent.
std::string_view seModule();
/// Returns the API name of the field for attachments.
std::string_view attachments();
/// Returns the source of temporary ids, or null before the host has set one.
std::shared_ptr<NewRecordIdGenerator> recordIDGenerator();

}  // namespace variant
}  // namespace tarvo
