#pragma once

#include "platform/Describe.h"

namespace tarvo {

/// Why metadata is not available: there is none, or the store could not be read.
enum class MetadataError { notFound };

template <>
struct EnumCases<MetadataError> {
    static constexpr EnumCase<MetadataError> cases[] = {{MetadataError::notFound, "notFound"}};
};

}  // namespace tarvo
