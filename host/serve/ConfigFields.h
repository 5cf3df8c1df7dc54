#pragma once

#include "bridge/forms/JsonForm.h"

namespace tarvo::host {

/// Sets fields of `CommonConfigration` by their names: all of them, or none when a name or a type is wrong.
[[nodiscard]] bridge::Reading setConfigFields(const ValueMap& fields);

}  // namespace tarvo::host
