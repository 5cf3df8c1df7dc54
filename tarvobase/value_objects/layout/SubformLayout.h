#pragma once

#include <string>
#include <vector>

#include "tarvobase/utils/OrderedDictionary.h"
#include "tarvobase/value_objects/layout/LayoutFieldLists.h"

/// Values for hosts that show the rows of a subform by a layout of the subform's module.
namespace tarvo {

/// Which layout of which module, as a parent's layout says it.
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
