#pragma once

#include <cstdint>
#include <string>

#include "platform/Describe.h"

namespace tarvo {

/// A record on which a transaction of the change queue depends, and the kind of the dependency.
struct RecordDependency {
    enum class Kind { add = 0, edit = 1, delete_ = 2, read = 3 };

    std::string recordId;
    std::int64_t transactionId = 0;
    Kind kind = Kind::read;
};

template <>
struct EnumCases<RecordDependency::Kind> {
    using K = RecordDependency::Kind;
    static constexpr EnumCase<K> cases[] = {
        {K::add, "add"}, {K::edit, "edit"}, {K::delete_, "delete_"}, {K::read, "read"}};
};

}  // namespace tarvo
