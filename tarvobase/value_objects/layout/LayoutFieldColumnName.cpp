#include "tarvobase/value_objects/layout/LayoutFieldColumnName.h"

#include "tarvobase/value_objects/layout/LayoutMetadata.h"

namespace tarvo {

SortColumn sortColumn(LayoutFieldColumnName column) {
    static constexpr LayoutMetadataDatabaseConstants names;
    switch (column) {
        case LayoutFieldColumnName::layoutID:
            return {names.LayoutID};
        case LayoutFieldColumnName::sectionSequence:
            return {names.SectionSequence, true};
        case LayoutFieldColumnName::fieldPosition:
            break;
    }
    return {names.FieldPosition, true};
}

}  // namespace tarvo
