#pragma once

#include "tarvobase/database_layer/SortDescriptor.h"
#include "tarvobase/usecase/Describe.h"

namespace tarvo {

enum class SortOrder { ascending, descending };

template <>
struct EnumCases<SortOrder> {
    static constexpr EnumCase<SortOrder> cases[] = {{SortOrder::ascending, "ascending", "asc"},
                                                    {SortOrder::descending, "descending", "desc"}};
};

/// One step of an order: a column, by name or by the case of an enumeration, and a direction.
template <class Column>
struct Sort {
    Column column{};
    SortOrder order = SortOrder::ascending;

    static constexpr auto fields() {
        return describe(field("column", &Sort::column), optionalField("order", &Sort::order));
    }
    friend bool operator==(const Sort&, const Sort&) = default;
};

}  // namespace tarvo
