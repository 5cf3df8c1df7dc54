#pragma once

#include <string>

#include "platform/Describe.h"

namespace tarvo {

/// How a layout shows the rows of a subform field.
struct SubformMetadata {
    std::string layoutID;    ///< the layout of the subform's module
    std::string moduleName;  ///< the subform's module
    int maxRow = 0;
    bool canReorderRow = false;

    static constexpr auto fields() {
        return describe(field("layoutID", &SubformMetadata::layoutID),
                        field("moduleName", &SubformMetadata::moduleName), field("maxRow", &SubformMetadata::maxRow),
                        field("canReorderRow", &SubformMetadata::canReorderRow));
    }
    friend bool operator==(const SubformMetadata&, const SubformMetadata&) = default;
};

}  // namespace tarvo
