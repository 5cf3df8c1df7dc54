#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tarvobase/value_objects/view/ColumnFilter.h"

namespace tarvo {

/// The condition of a date filter on a column that holds seconds since 1970, in local time. It goes by the moment at
/// which it runs, so that "today" stays right for as long as a text is kept. Nothing for inputs that are missing or
/// cannot be read.
std::optional<std::string> dateCondition(const std::string& column, DateFilterTypes type,
                                         const std::vector<std::string>& inputs);
/// The same to the second.
std::optional<std::string> dateCondition(const std::string& column, DateTimeFilterTypes type,
                                         const std::vector<std::string>& inputs);

}  // namespace tarvo
