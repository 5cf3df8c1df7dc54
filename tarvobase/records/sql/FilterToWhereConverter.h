#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tarvobase/value_objects/view/ColumnFilter.h"

namespace tarvo {

/// Converts column filters to conditions on a record table. A filter that lacks a value it needs, or whose value cannot
/// be read, gives no condition; for dates this is logged. Stateless, may be called from any thread.
struct FilterToWhereConverter {
    /// Returns the conditions of all filters, joined by AND in parentheses, or nullopt if no filter gives one. With a
    /// module, the columns are qualified by its record table.
    static std::optional<std::string> getWhereStatement(const std::vector<ColumnFilter>& filters,
                                                        const std::optional<std::string>& moduleName = std::nullopt);
    static std::optional<std::string> getWhereStatement(const ColumnFilter& filter,
                                                        const std::optional<std::string>& moduleName = std::nullopt);
};

}  // namespace tarvo
