#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/Value.h"

namespace tarvo::sandbox::calls {

/// The texts of a parameter that is a JSON list; nothing for any other text.
std::optional<std::vector<std::string>> listIn(const std::string& parameter);
/// Names in a JSON list or joined by ",".
std::vector<std::string> namesIn(const std::string& parameter);

/// A flag as the server writes it in rows.
inline platform::Value flag(bool value) { return value ? "true" : "false"; }

}  // namespace tarvo::sandbox::calls
