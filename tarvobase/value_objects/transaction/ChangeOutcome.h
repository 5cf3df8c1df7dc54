#pragma once

#include <cstdint>
#include <string>

#include "platform/Describe.h"

namespace tarvo {

/// What has become of a change. The raw texts are stored, and hosts see them.
enum class ChangeOutcome {
    queued,     ///< the server does not have it yet, or has refused it
    accepted,   ///< the server has it, or the delete of its record has made it needless
    merged,     ///< another change of its record has taken its place
    cancelled,  ///< it was taken out of its queue before the server had it
    unknown     ///< there was no such change, or it ended too long ago
};

template <>
struct EnumCases<ChangeOutcome> {
    using O = ChangeOutcome;
    static constexpr EnumCase<O> cases[] = {{O::queued, "queued"},
                                            {O::accepted, "accepted"},
                                            {O::merged, "merged"},
                                            {O::cancelled, "cancelled"},
                                            {O::unknown, "unknown"}};
};

/// A change that leaves its queue.
struct EndedChange {
    std::string transactionId;
    std::string moduleName;
    std::string recordId;  ///< the server's id if the end of the change has brought it
};

/// What the register remembers of a change that has left its queue.
struct ChangeEnd {
    std::int64_t number = 0;
    ChangeOutcome outcome = ChangeOutcome::unknown;
    std::string moduleName;
    std::string recordId;
    friend bool operator==(const ChangeEnd&, const ChangeEnd&) = default;
};

}  // namespace tarvo
