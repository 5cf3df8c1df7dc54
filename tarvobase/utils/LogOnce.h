#pragma once

#include <string>

namespace tarvo {

/// Logs a line once per process, so that a fault in the data is reported once and not at every read. The lines are kept
/// in memory: they name tables, columns and kinds, which are few, and never values or ids of rows.
void logOnce(const std::string& line);

}  // namespace tarvo
