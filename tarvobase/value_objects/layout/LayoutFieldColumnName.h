#pragma once

#include "tarvobase/value_objects/field/Sort.h"

namespace tarvo {

/// Columns that the rows of layouts may be sorted by.
enum class LayoutFieldColumnName { layoutID, sectionSequence, fieldPosition };

/// Returns the column of the table of layouts for this case.
SortColumn sortColumn(LayoutFieldColumnName column);

using LayoutSort = Sort<LayoutFieldColumnName>;

}  // namespace tarvo
