#pragma once

#include <string>

#include "tarvobase/records/Record.h"
#include "tarvobase/value_objects/field/FieldList.h"

namespace tarvo::host {

/// Returns what people read of a field of a record: lookups and picklists by their shown texts, dates in the user's
/// formats and the zone in force, everything else as it is stored. Empty without a value.
std::string readableText(const Record& record, const FieldMetadata& field, const FieldList& fields);

/// Cuts a text after so many characters, with "…" for the rest.
std::string shortened(const std::string& text, std::size_t characters);

}  // namespace tarvo::host
