#pragma once

#include "platform/Describe.h"

namespace tarvo {

/// Why metadata could not be had: there is none, or the store gave no answer.
enum class MetadataError { notFound };

template <>
struct EnumCases<MetadataError> {
    static constexpr EnumCase<MetadataError> cases[] = {{MetadataError::notFound, "notFound"}};
};

}  // namespace tarvo
