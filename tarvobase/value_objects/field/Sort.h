#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/Describe.h"
#include "tarvobase/database_layer/SortDescriptor.h"

namespace tarvo {

enum class SortOrder { ascending, descending };

template <>
struct EnumCases<SortOrder> {
    static constexpr EnumCase<SortOrder> cases[] = {{SortOrder::ascending, "ascending", "asc"},
                                                    {SortOrder::descending, "descending", "desc"}};
};

/// One term of an order: a column, given by name or as a case of an enumeration, and a direction.
template <class Column>
struct Sort {
    Column column{};
    SortOrder order = SortOrder::ascending;

    static constexpr auto fields() {
        return describe(field("column", &Sort::column), optionalField("order", &Sort::order));
    }
    friend bool operator==(const Sort&, const Sort&) = default;
};

/// The table column that a case of an enumeration stands for. A column of numbers sorts as numbers although it is
/// stored as text.
struct SortColumn {
    std::string_view name;
    bool isNumeric = false;
};

/// Returns the order terms on a table's columns. The enumeration needs a function `sortColumn(case)`.
template <class Column>
SortDescriptor sortDescriptor(const Sort<Column>& sort) {
    auto column = sortColumn(sort.column);
    return SortDescriptor({.colName = std::string(column.name),
                           .ascending = sort.order == SortOrder::ascending,
                           .numeric = column.isNumeric});
}
template <class Column>
std::vector<SortDescriptor> sortDescriptors(const std::vector<Sort<Column>>& sorts) {
    std::vector<SortDescriptor> descriptors;
    descriptors.reserve(sorts.size());
    for (auto& sort : sorts) descriptors.push_back(sortDescriptor(sort));
    return descriptors;
}

}  // namespace tarvo
