#pragma once

#include <string>

#include "platform/Describe.h"
#include "tarvobase/database_layer/SortDescriptor.h"

namespace tarvo {

struct FieldMetadata;

/// A chosen order: the identifier of a column, and a direction.
struct SortField {
    std::string column;
    bool isAscending = true;

    static constexpr auto fields() {
        return describe(field("column", &SortField::column), field("isAscending", &SortField::isAscending));
    }
    friend bool operator==(const SortField&, const SortField&) = default;
};

/// Returns the order term of a choice. The metadata of its field, which may be null, decides whether it sorts as a
/// number.
SortDescriptor sortDescriptor(const SortField& sortField, const FieldMetadata* fieldMetadata);
SortDescriptor sortDescriptor(const SortField& sortField, const FieldMetadata& fieldMetadata, bool nullValuesAtEnd);

}  // namespace tarvo
