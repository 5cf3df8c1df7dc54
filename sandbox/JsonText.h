#pragma once

#include <string>
#include <string_view>

namespace tarvo::sandbox {

/// Appends a text in quotes, escaped where JSON asks for it. The text is UTF-8.
void appendJsonText(std::string& json, std::string_view text);

}  // namespace tarvo::sandbox
