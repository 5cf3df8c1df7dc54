#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tarvobase/database_layer/SortDescriptor.h"
#include "tarvobase/value_objects/field/SortField.h"

namespace tarvo {

class DatabaseAdapter;
struct ModuleInfo;

/// Behind the name of a column: what a list shows as the header of a section.
inline constexpr std::string_view sectionNameSuffix = "_sectionName";

/// Orders of lists that are shown with section headers.
struct SortDescriptorUtil {
    /// A column to select besides those of the list. Both parts are SQL.
    struct SelectColumn {
        std::string expression;
        std::string name;
        std::string sql() const { return expression + " as " + name; }
    };
    /// An order, whose terms may refer to the columns by their names.
    struct SortList {
        std::vector<SelectColumn> columns;
        std::vector<SortDescriptor> descriptors;
    };
    /// A column without a field is logged and adds nothing. `database` has the table of the module's records; without
    /// it the table counts as one that keeps no parts of names.
    static SortList getSortList(const ModuleInfo& moduleInfo, const std::vector<SortField>& sortFields,
                                const std::shared_ptr<DatabaseAdapter>& database);
};

}  // namespace tarvo
