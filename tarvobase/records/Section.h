#pragma once

#include <vector>

#include "platform/Describe.h"

namespace tarvo {

/// Neighbouring records of a list that share a header.
template <class Name, class Value>
struct Section {
    Name name;
    std::vector<Value> records;

    static constexpr auto fields() {
        return describe(field("name", &Section::name), field("records", &Section::records));
    }
    friend bool operator==(const Section&, const Section&) = default;
};

}  // namespace tarvo
