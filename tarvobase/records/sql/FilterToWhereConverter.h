#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tarvobase/value_objects/view/ColumnFilter.h"

namespace tarvo {

/// Column filters as where-texts over a record table. A filter that lacks a value it needs, or has one that cannot be
/// read, gives no text, which is logged for dates. Stateless, from any thread.
struct FilterToWhereConverter {
    /// All filters that give text, joined by AND in parentheses; nothing when none does. With a module the columns are
    /// qualified by its record table.
    static std::optional<std::string> getWhereStatement(const std::vector<ColumnFilter>& filters,
                                                        const std::optional<std::string>& moduleName = std::nullopt);
    static std::optional<std::string> getWhereStatement(const ColumnFilter& filter,
                                                        const std::optional<std::string>& moduleName = std::nullopt);
};

}  // namespace tarvo
