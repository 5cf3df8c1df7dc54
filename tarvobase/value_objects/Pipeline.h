#pragma once

#include <string>

#include "tarvobase/usecase/Describe.h"
#include "tarvobase/value_objects/StoredForm.h"

namespace tarvo {

/// A way that deals go, stage by stage.
struct Pipeline {
    std::string id;
    std::string actualName;
    std::string displayName;

    static constexpr auto fields() {
        return describe(field("id", &Pipeline::id), field("actualName", &Pipeline::actualName),
                        field("displayName", &Pipeline::displayName));
    }
    friend bool operator==(const Pipeline&, const Pipeline&) = default;
};

struct PipelineParser {
    std::string_view TableName = "Pipeline";
    std::string_view Id = "id";
    std::string_view ActualName = "actualName";
    std::string_view DisplayName = "displayName";
};

struct PipelineDBParser : PipelineParser {
    constexpr PipelineDBParser() {
        TableName = "DEALS_PIPELINE";
        Id = "pipeline_id";
        ActualName = "actual_value";
        DisplayName = "display_value";
    }
    ValueMap getDictionary(const Pipeline& pipeline) const;
    Pipeline getValue(const Row& row) const;
};

}  // namespace tarvo
