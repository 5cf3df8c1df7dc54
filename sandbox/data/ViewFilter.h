#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

namespace tarvo::sandbox {

class DataSet;
class RecordData;
struct ViewData;

/// Judges records by the criteria of a view, on behalf of an account's user. It is made once per list and then judges
/// each record. Texts compare without regard to the case of ASCII letters, numbers and times by size. A field that a
/// record lacks fails every comparison but "is_empty". Several values of one leaf are alternatives. Safe to use from
/// any thread; the data set outlives the filter.
class ViewFilter {
public:
    /// `now` is in milliseconds of the server's clock.
    ViewFilter(const DataSet& data, const ViewData& view, std::string_view account, std::int64_t now);
    ~ViewFilter();

    bool holds(const RecordData& record) const;

private:
    struct Node;
    std::unique_ptr<const Node> root_;
};

}  // namespace tarvo::sandbox
