#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tarvobase/database_layer/SortDescriptor.h"
#include "tarvobase/value_objects/field/SortField.h"

namespace tarvo {

struct ModuleInfo;

/// Behind the name of a column: what a list shows as the header of a section.
inline constexpr std::string_view sectionNameSuffix = "_sectionName";

/// Orders of lists that are shown with section headers.
struct SortDescriptorUtil {
    /// Columns to select besides those of the list, and the order terms, which may refer to them. A column without a
    /// field is logged and adds nothing.
    using SortList = std::pair<std::vector<std::string>, std::vector<SortDescriptor>>;
    static SortList getSortList(const ModuleInfo& moduleInfo, const std::vector<SortField>& sortFields);
};

}  // namespace tarvo
