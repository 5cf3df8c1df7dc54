#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tarvobase/value_objects/view/ColumnFilter.h"

namespace tarvo {

/// Returns the condition of a date filter on a column that holds seconds since 1970. Days are those of the local time
/// zone. Inputs are moments such as "2026-05-31 12:00:00 +0000" or "2026-05-31T12:00:00Z". "Today" and its like are
/// evaluated when the statement runs, so the text never becomes stale. Returns nullopt if an input is missing or cannot
/// be read.
std::optional<std::string> dateCondition(const std::string& column, DateFilterTypes type,
                                         const std::vector<std::string>& inputs);
/// The same for filters that are exact to the second.
std::optional<std::string> dateCondition(const std::string& column, DateTimeFilterTypes type,
                                         const std::vector<std::string>& inputs);

}  // namespace tarvo
