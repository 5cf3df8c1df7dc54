#pragma once

#include <string>

#include "platform/Describe.h"

namespace tarvo {

/// A stage that the organisation's deals pass through, whatever their pipeline.
struct DealStage {
    enum class StageType { open, closedWon, closedLost };

    std::string id;
    std::string name;
    std::string displayName;
    StageType stageType = StageType::open;

    static constexpr auto fields() {
        return describe(field("id", &DealStage::id), field("name", &DealStage::name),
                        field("displayName", &DealStage::displayName), field("stageType", &DealStage::stageType));
    }
    friend bool operator==(const DealStage&, const DealStage&) = default;
};

template <>
struct EnumCases<DealStage::StageType> {
    using T = DealStage::StageType;
    static constexpr EnumCase<T> cases[] = {{T::open, "open", "Open"},
                                            {T::closedWon, "closedWon", "Closed Won"},
                                            {T::closedLost, "closedLost", "Closed Lost"}};
};

}  // namespace tarvo
