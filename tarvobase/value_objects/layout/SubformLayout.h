#pragma once

#include <string>
#include <vector>

#include "tarvobase/utils/OrderedDictionary.h"
#include "tarvobase/value_objects/layout/LayoutFieldLists.h"

/// Values for hosts that show the rows of a subform with a layout of the subform's module.
namespace tarvo {

/// Names the layout that a subform uses and its module, as the parent's layout says.
struct SubformLayoutMetadata {
    std::string layoutID;
    std::string moduleAPIName;
    std::string moduleID;
    int maximumRows = 0;
    bool canReorderRows = false;

    friend bool operator==(const SubformLayoutMetadata&, const SubformLayoutMetadata&) = default;
};

struct SubformLayout {
    std::string moduleName;
    std::string layoutID;
    std::string layoutName;
    bool isDefault = false;
    OrderedLayoutFieldList metadata;
    int maximumRows = 0;
    bool canReorderRows = false;
    std::vector<LayoutMetadata> aggregateFields;  ///< sums and the like below the rows
};

struct SubformLayoutInfo {
    OrderedDictionary<std::string, SubformLayout> orderedLayouts;  ///< by layout id
};

}  // namespace tarvo
