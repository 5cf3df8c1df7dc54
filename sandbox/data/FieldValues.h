#pragma once

#include "sandbox/data/RecordShape.h"

namespace tarvo::sandbox {

/// Returns the function that makes a field's values: by the field's own rule when it has one, otherwise by its type.
RecordShape::Make makerOf(std::string_view module, const FieldData& field);

}  // namespace tarvo::sandbox
