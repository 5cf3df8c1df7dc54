#pragma once

#include <string>

namespace tarvo {

/// Logs a line the first time that it comes in this process. For what an answer repeats in every row, such as a type
/// that this version does not know. From any thread.
void logOnce(const std::string& line);

}  // namespace tarvo
