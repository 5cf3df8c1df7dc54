#pragma once

#include <memory>
#include <string>

namespace tarvo {

class DatabaseAdapter;

/// Keeps indexes on record tables beside those of the server's schema, so that a long list is read in its order instead
/// of being sorted for every page. With an index a page out of 100,000 records takes a millisecond; without one it
/// takes half a second.
///
/// An index is made after the first read of a long list in that order. The work runs on the background queue as one
/// write, and no read waits for it. The index slows each later write to the table by about a tenth
/// (`benchmarks/list_view`). A table therefore has only the index of its last order, and the first download, which
/// comes before any list, has none. The names begin with "tarvo_order_"; dropping such an index costs nothing but time.
struct ListOrderIndexes {
    /// Records that a table was read in an order, and makes the index if it does not exist. Returns at once; may be
    /// called from any thread. `terms` are the terms of the ORDER BY, over columns of the table. If SQLite refuses the
    /// index, the order is not tried again while it stays the last one.
    static void keep(const std::shared_ptr<DatabaseAdapter>& adapter, const std::string& table,
                     const std::string& terms);
};

}  // namespace tarvo
