#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tarvobase/database_layer/DatabaseAdapter.h"

namespace tarvo {

/// The order of the changes of one record that stand in different queues: each edit or delete waits for what the other
/// queue has of its record under a lower number of the register. A change that has failed holds nothing up, and one
/// that creates a record comes before all others of it, whatever its number. Each queue keeps its own order by itself.
/// Nothing is stored of who waits, so that nobody has to be freed.
class RecordOrder {
public:
    /// A change that waits, and the last one of its record that comes before it in the other queue. Both are still to
    /// be sent.
    struct Pair {
        std::string olderId;  ///< the row of the older queue
        std::int64_t currentId = 0;
        bool isOlderFirst = false;
    };

    /// Takes the table of an organisation's older queue. The adapter may be null.
    RecordOrder(std::shared_ptr<DatabaseAdapter> adapter, std::string olderTable)
        : adapter_(std::move(adapter)), olderTable_(std::move(olderTable)) {}

    /// Returns the condition under which no earlier change of the older queue stands in the way of `txn`, a row of the
    /// current queue. Returns the empty text if none can.
    std::string isFirst() const;
    /// Returns a pair for each change that waits, or nullopt if a queue cannot be read.
    std::optional<std::vector<Pair>> pairs() const;

private:
    bool hasTables() const;

    const std::shared_ptr<DatabaseAdapter> adapter_;
    const std::string olderTable_;
};

}  // namespace tarvo
