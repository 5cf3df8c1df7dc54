#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tarvobase/value_objects/layout/Layout.h"
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

    /// Reads a subform field of the parent's layout. Returns nullopt if the field is not a subform or does not name its
    /// module. A setting that the layout lacks is empty, 0 or false.
    static std::optional<SubformLayoutMetadata> of(const LayoutMetadata& subformField);

    friend bool operator==(const SubformLayoutMetadata&, const SubformLayoutMetadata&) = default;
};

/// A layout of a subform's module with the parent's settings for the rows.
struct SubformLayout : Layout<OrderedLayoutFieldList> {
    int maximumRows = 0;
    bool canReorderRows = false;
    std::vector<LayoutMetadata> aggregateFields;  ///< sums and the like below the rows

    SubformLayout(Layout<OrderedLayoutFieldList> layout, const SubformLayoutMetadata& subform,
                  std::vector<LayoutMetadata> aggregateFields)
        : Layout(std::move(layout)),
          maximumRows(subform.maximumRows),
          canReorderRows(subform.canReorderRows),
          aggregateFields(std::move(aggregateFields)) {}
};

struct SubformLayoutInfo : LayoutInfoContract<SubformLayout> {};

}  // namespace tarvo
