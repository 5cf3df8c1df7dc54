#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tarvobase/database_layer/SortDescriptor.h"
#include "tarvobase/value_objects/field/SortField.h"

namespace tarvo {

class DatabaseAdapter;
struct ModuleInfo;

/// Suffix of the column that holds the header of a section.
inline constexpr std::string_view sectionNameSuffix = "_sectionName";

/// Makes the orders of lists that are shown with section headers.
struct SortDescriptorUtil {
    /// A column to select in addition to those of the list. Both parts are SQL.
    struct SelectColumn {
        std::string expression;
        std::string name;
        std::string sql() const { return expression + " as " + name; }
    };
    /// An order. Its terms may refer to the columns by their names.
    struct SortList {
        std::vector<SelectColumn> columns;
        std::vector<SortDescriptor> descriptors;
    };
    /// Returns the order of `sortFields`. A column without a field is logged and skipped. `database` holds the module's
    /// record table; without it, the table is assumed not to store parts of names.
    static SortList getSortList(const ModuleInfo& moduleInfo, const std::vector<SortField>& sortFields,
                                const std::shared_ptr<DatabaseAdapter>& database);
};

}  // namespace tarvo
