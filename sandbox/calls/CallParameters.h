#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Value.h"
#include "sandbox/CallTable.h"

namespace tarvo::sandbox {
struct ModuleData;
struct ViewData;
}  // namespace tarvo::sandbox

namespace tarvo::sandbox::calls {

/// Returns the texts of a parameter that is a JSON list; nullopt for any other text.
std::optional<std::vector<std::string>> listIn(const std::string& parameter);
/// Returns the names in a JSON list, or in a text that joins them by ",".
std::vector<std::string> namesIn(const std::string& parameter);

/// Returns a parameter of the request, empty when it is absent.
std::string parameter(const Call& call, std::string_view name);
/// Returns a whole number that is not negative, and 0 for an absent parameter; nullopt for any other text.
std::optional<std::int64_t> countIn(const Call& call, std::string_view name);
/// Returns the module that a request names by one of two parameters; null when there is none with lists of its own.
const ModuleData* moduleOf(const Call& call, std::string_view nameParameter = "module",
                           std::string_view apiNameParameter = "moduleAPI");
/// Returns the view of a module by its id; null when the module has no such view. Valid while the server's lock is
/// held.
const ViewData* viewOf(const Call& call, const ModuleData& module, std::string_view viewId);

/// Returns a flag as the server writes it in rows.
inline platform::Value flag(bool value) { return value ? "true" : "false"; }

}  // namespace tarvo::sandbox::calls
