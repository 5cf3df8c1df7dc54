#pragma once

#include <string>

#include "tarvobase/storage/StoredNames.h"

namespace tarvo {

struct Pipeline;

struct PipelineParser : StoredNames<PipelineParser, Pipeline> {
    std::string_view TableName = of("Pipeline", "DEALS_PIPELINE");
    std::string_view Id = of("id", "pipeline_id");
    std::string_view ActualName = of("actualName", "actual_value");
    std::string_view DisplayName = of("displayName", "display_value");
};
struct PipelineDBParser : TableTwin<PipelineParser> {};

/// A pipeline: the stages that a deal passes through, in order.
struct Pipeline {
    std::string id;
    std::string actualName;
    std::string displayName;

    static constexpr auto fields() {
        using V = Pipeline;
        using Names = PipelineParser;
        return describe(field("id", &V::id, &Names::Id), field("actualName", &V::actualName, &Names::ActualName),
                        field("displayName", &V::displayName, &Names::DisplayName));
    }
    friend bool operator==(const Pipeline&, const Pipeline&) = default;
};

}  // namespace tarvo
