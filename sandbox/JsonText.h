#pragma once

#include <string>
#include <string_view>

namespace tarvo::sandbox {

/// Appends a UTF-8 text in quotes, escaped where JSON requires it.
void appendJsonText(std::string& json, std::string_view text);

}  // namespace tarvo::sandbox
