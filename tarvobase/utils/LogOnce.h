#pragma once

#include <string>

namespace tarvo {

/// Logs a line the first time that the process says it, so that a fault of the data is told once and not at every read.
/// Lines are kept: they name tables, columns and kinds, of which there are few, and never values or ids of rows.
void logOnce(const std::string& line);

}  // namespace tarvo
