#pragma once

#include "platform/Describe.h"

namespace tarvo {

/// What limits a download. The two limited modes act alike.
enum class DownloadRecordsMaxCount {
    defaultMaxCount,  ///< goes on until the module's setting is reached
    loadMore,         ///< one page of each module, of the server's size
    defaultOrUserMaxCount
};
template <>
struct EnumCases<DownloadRecordsMaxCount> {
    using C = DownloadRecordsMaxCount;
    static constexpr EnumCase<C> cases[] = {{C::defaultMaxCount, "defaultMaxCount"},
                                            {C::loadMore, "loadMore"},
                                            {C::defaultOrUserMaxCount, "defaultOrUserMaxCount"}};
};

}  // namespace tarvo
