#pragma once

#include <string>
#include <utility>
#include <vector>

#include "platform/Value.h"

namespace bren {

/// Parameters as the plain texts that travel, in their order: a Bool as "true" or "false", bytes as Base64, a list or a
/// map as its JSON text, null as the empty text. What has no text (an object of the program, a number that is not
/// finite) is left out and logged by kind.
std::vector<std::pair<std::string, std::string>> plainTexts(const tarvo::ValueMap& params);

}  // namespace bren
