#pragma once

#include <string>

#include "tarvobase/records/Record.h"
#include "tarvobase/value_objects/field/FieldList.h"

namespace tarvo::host {

/// What people read of a field of a record: lookups by what is shown for them, dates in the user's formats and the zone
/// in force, labels of picklists, everything else as it is stored. Empty without a value.
std::string readableText(const Record& record, const FieldMetadata& field, const FieldList& fields);

/// At most so many characters, with "…" for what is left out.
std::string shortened(const std::string& text, std::size_t characters);

}  // namespace tarvo::host
