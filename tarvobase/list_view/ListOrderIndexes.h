#pragma once

#include <memory>
#include <string>

namespace tarvo {

class DatabaseAdapter;

/// Indexes that the library keeps on record tables beside those of the server's schema, so that a long list is read in
/// its order instead of being sorted at every page: with one, a page out of 100,000 records takes a millisecond,
/// without one half a second.
///
/// An index is made after the first read of a long list in that order, on the background queue and then as one write:
/// no read waits for it. It slows each later write to the table by about a tenth (`benchmarks/list_view`); a table
/// therefore has that of the last order alone, and the first download, which comes before any list, has none. They are
/// named "tarvo_order_" and so on; dropping one costs time alone.
struct ListOrderIndexes {
    /// Notes that a table was read in an order, and makes the index when it is not there. Returns at once; from any
    /// thread. `terms` are those of the ORDER BY, over columns of the table. An order that SQLite refuses an index
    /// for is not tried again while it stays the last one.
    static void keep(const std::shared_ptr<DatabaseAdapter>& adapter, const std::string& table,
                     const std::string& terms);
};

}  // namespace tarvo
