#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Value.h"
#include "sandbox/CallTable.h"

namespace tarvo::sandbox {
struct ModuleData;
}

namespace tarvo::sandbox::calls {

/// Returns the texts of a parameter that is a JSON list; nullopt for any other text.
std::optional<std::vector<std::string>> listIn(const std::string& parameter);
/// Returns the names in a JSON list, or in a text that joins them by ",".
std::vector<std::string> namesIn(const std::string& parameter);

/// Returns a parameter of the request, empty when it is absent.
std::string parameter(const Call& call, std::string_view name);
/// Returns the module that a request names by one of two parameters; null when there is none with lists of its own.
const ModuleData* moduleOf(const Call& call, std::string_view nameParameter = "module",
                           std::string_view apiNameParameter = "moduleAPI");

/// Returns a flag as the server writes it in rows.
inline platform::Value flag(bool value) { return value ? "true" : "false"; }

}  // namespace tarvo::sandbox::calls
