#pragma once

#include "bridge/forms/JsonForm.h"

namespace tarvo::host {

/// Sets fields of `CommonConfigration` by name: all of them, or none if a name or a type is wrong.
[[nodiscard]] bridge::Reading setConfigFields(const ValueMap& fields);

}  // namespace tarvo::host
