#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/Value.h"

namespace tarvo::sandbox::calls {

/// Returns the texts of a parameter that is a JSON list; nullopt for any other text.
std::optional<std::vector<std::string>> listIn(const std::string& parameter);
/// Returns the names in a JSON list, or in a text that joins them by ",".
std::vector<std::string> namesIn(const std::string& parameter);

/// Returns a flag as the server writes it in rows.
inline platform::Value flag(bool value) { return value ? "true" : "false"; }

}  // namespace tarvo::sandbox::calls
