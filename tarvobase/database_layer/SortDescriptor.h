#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tarvobase/database_layer/Query.h"

namespace tarvo {

/// One order term. Those made from a `SortField` and its metadata come from `value_objects/SortField.h`.
class SortDescriptor final : public Query {
public:
    /// Every part by name.
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
    /// A text that is the whole term.
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
