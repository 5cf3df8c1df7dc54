#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tarvobase/database_layer/Query.h"

namespace tarvo {

/// One term of an ORDER BY clause. `value_objects/field/SortField.h` makes terms from fields and their metadata.
class SortDescriptor final : public Query {
public:
    /// The pieces of a term by name.
    struct Parts {
        std::string colName;
        bool ascending = true;
        bool numeric = false;        ///< sort the column as an integer
        bool pickListField = false;  ///< sort by the place of the value in `pickListValues`
        std::vector<std::string> pickListValues{};
        std::optional<std::string> customOrderBy{};  ///< replaces the whole term
        bool nullValuesAtEnd = false;
    };

    explicit SortDescriptor(Parts parts) : parts_(std::move(parts)) {}
    /// Makes a term of a text that is the whole term.
    static SortDescriptor customOrderBy(std::string text);

    const std::string& colName() const { return parts_.colName; }
    bool ascending() const { return parts_.ascending; }
    bool numeric() const { return parts_.numeric; }
    bool pickListField() const { return parts_.pickListField; }
    const std::vector<std::string>& pickListValues() const { return parts_.pickListValues; }
    const std::optional<std::string>& customOrderBy() const { return parts_.customOrderBy; }
    bool nullValuesAtEnd() const { return parts_.nullValuesAtEnd; }

    std::string sql() const override;
    ValueList parameters() const override { return {}; }

private:
    Parts parts_;
};

}  // namespace tarvo
