#pragma once

#include "sandbox/data/RecordShape.h"

namespace tarvo::sandbox {

/// The maker of a field's values: by the field's own rule when it has one, else by its type.
RecordShape::Make makerOf(std::string_view module, const FieldData& field);

}  // namespace tarvo::sandbox
