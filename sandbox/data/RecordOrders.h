#pragma once

#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include "platform/ThreadSafety.h"
#include "sandbox/data/RecordStore.h"

namespace tarvo::sandbox {

struct FieldData;

/// Names a field to sort by; without one the order is by id.
struct RecordSort {
    const FieldData* field = nullptr;
    bool isAscending = false;
};

/// Makes and caches lists of positions in a module, filtered and sorted. Sorting many records is slow, and clients page
/// through one list, so the last orders are cached, up to a number of positions in all. Safe to use from any thread;
/// two threads that ask for the same order at once may both make it.
class RecordOrders {
public:
    using Positions = std::shared_ptr<const std::vector<std::uint32_t>>;
    using Filter = std::function<bool(const RecordData&)>;

    /// Returns the positions of the records of a module's list that pass the filter. A record without a value counts as
    /// the smallest, and records with equal values are ordered by id, the highest first. `filterId` identifies the
    /// filter: equal ids mean equal results. The order of the snapshot is cached by itself, so that after a change only
    /// the changed records are judged and sorted.
    Positions order(const RecordList& records, const std::string& module, const std::string& filterId,
                    const Filter& filter, const RecordSort& sort);

private:
    struct CachedOrder {
        std::string key;
        Positions positions;
    };

    Positions cached(const std::string& key);
    void cache(const std::string& key, const Positions& positions);

    platform::Mutex mutex_;
    /// The order that was used last comes first.
    std::list<CachedOrder> cache_ TARVO_GUARDED_BY(mutex_);
};

}  // namespace tarvo::sandbox
