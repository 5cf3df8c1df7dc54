#pragma once

#include <string>
#include <vector>

#include "tarvobase/utils/OrderedDictionary.h"
#include "tarvobase/value_objects/ColumnFilter.h"
#include "tarvobase/value_objects/FieldMetadata.h"
#include "tarvobase/value_objects/MetadataInfoContract.h"

namespace tarvo {

/// The filters that a column of a list offers, in the order offered; none for a field that cannot be filtered. Fields
/// of layouts are fields too. Columns go by the naming in force. From any thread.
class GetFilters {
public:
    using Filters = std::vector<ColumnFilter>;
    /// By the identifier of the field.
    using FiltersByColumn = OrderedDictionary<std::string, Filters>;

    static Filters getFilters(const Metadata& column);
    static FiltersByColumn getFilters(const std::vector<const Metadata*>& columns);
    /// By identifier; a column without a field has no filters.
    static Filters getFilters(const std::string& column, const MetadataInfoContract& metadata);
    static FiltersByColumn getFilters(const std::vector<std::string>& columns, const MetadataInfoContract& metadata);
};

/// One filter of a known comparator, with its name and its inputs, whether the column offers it or not.
struct GetColumnFilter {
    static ColumnFilter getFilter(const FilterType& filterType, const Metadata& column);
    static ColumnFilter getFilter(const FilterType& filterType, std::string column);
};

}  // namespace tarvo
