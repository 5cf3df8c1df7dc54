#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tarvo::sandbox::calls {

/// The texts of a parameter that is a JSON list; nothing for any other text.
std::optional<std::vector<std::string>> listIn(const std::string& parameter);
/// Names in a JSON list or joined by ",".
std::vector<std::string> namesIn(const std::string& parameter);

}  // namespace tarvo::sandbox::calls
